#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qv_tools {

/// What a look at one thing came to.
enum class Level { kOk, kWarning, kError };

struct Finding {
    Level level = Level::kOk;
    std::string check;   ///< what was looked at, in one word: "profile", "key", ...
    std::string file;    ///< the file or directory concerned; may be empty
    std::string text;    ///< what was found
    std::string advice;  ///< what to do about it; empty when nothing needs to be done
    std::optional<long> days_left;
};

/// The findings of one run, in the order in which they were made. One thread at a time.
class Findings {
  public:
    void Ok(const std::string& check, const std::string& file, const std::string& text) {
        Add({Level::kOk, check, file, text, "", std::nullopt});
    }
    void Warn(const std::string& check, const std::string& file, const std::string& text,
              const std::string& advice) {
        Add({Level::kWarning, check, file, text, advice, std::nullopt});
    }
    void Error(const std::string& check, const std::string& file, const std::string& text,
               const std::string& advice) {
        Add({Level::kError, check, file, text, advice, std::nullopt});
    }
    void Add(Finding finding) { m_all.push_back(std::move(finding)); }

    const std::vector<Finding>& all() const { return m_all; }

  private:
    std::vector<Finding> m_all;
};

}  // namespace qv_tools
