// Passes the name server's own messages on to the operator.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace qv_naming {

/// Splits the name server's output into lines, keeps what the start-up needs to know, and decides which lines
/// an operator sees. A message that repeats within kQuietTime is counted and reported once with its count.
/// Not thread safe.
class LineRelay {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kQuietTime{60};

    /// Takes raw output; returns the lines to print, without line ends.
    std::vector<std::string> Take(const std::string& output, Clock::time_point now);

    /// The reference of the root context, empty until the name server has printed it.
    const std::string& RootReference() const { return root_reference_; }

    /// True once the name server said that its binding file can't be read to the end.
    bool DataDamaged() const { return data_damaged_; }

    /// The line of the binding file that can't be read, as printed; empty when not known.
    const std::string& DamagedLine() const { return damaged_line_; }

    /// The last message worth showing, empty when there was none.
    const std::string& LastMessage() const { return last_message_; }

  private:
    struct Repeats {
        Clock::time_point shown;
        unsigned long held_back = 0;
    };

    void Understand(const std::string& message);
    std::string Filter(const std::string& message, Clock::time_point now);

    std::string rest_;
    std::string root_reference_;
    std::string damaged_line_;
    std::string last_message_;
    bool data_damaged_ = false;
    std::map<std::string, Repeats> seen_;
};

}  // namespace qv_naming
