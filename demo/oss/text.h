#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace qv_oss {

/// The text with every control character replaced by "?", so that what a stranger sent can't steer the
/// terminal.
std::string Printable(const std::string& text);

/// Seconds with as many decimals as it takes, three at most, as "1.5".
std::string Seconds(std::chrono::milliseconds time);

/// A table with aligned columns that is written page by page: columns grow where a later page needs it.
class Table {
  public:
    explicit Table(std::vector<std::string> titles);

    void Add(std::vector<std::string> row);

    /// The rows added since the last call, each ended by a line feed, the titles ahead of the first ones.
    std::string Take();

  private:
    std::string Line(const std::vector<std::string>& row) const;

    const std::vector<std::string> titles_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<std::string>> rows_;
    bool titled_ = false;
};

}  // namespace qv_oss
