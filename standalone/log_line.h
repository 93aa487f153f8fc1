#pragma once

#include <chrono>
#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>

namespace qv_standalone {

/// One line of a log file but for the time that it begins with: what can be made before its place in the file
/// is known. Used by one thread at a time.
class LogLine {
  public:
    /// The line of a record that the calling thread makes. Control characters of `file` and `text` stand as
    /// \xNN, further lines of `text` are indented.
    LogLine(const std::string& file, int line, int level, const std::string& text);

    /// " [thread] body" and the end of the line.
    std::string_view text() const { return m_text; }
    /// Level, source position and text: what makes two records equal.
    std::string_view body() const;

  private:
    std::string m_text;
    std::size_t m_body = 0;  // where the body begins
};

/// Local time as "2026-11-21T16:12:01.123+01:00". Used by one thread at a time.
class LogStamp {
  public:
    /// Valid until the next call.
    std::string_view At(std::chrono::system_clock::time_point time);

  private:
    void SetSecond(std::time_t second);

    std::time_t m_second = -1;
    std::string m_text;
};

}  // namespace qv_standalone
