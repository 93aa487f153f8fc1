#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "platform/log_service.h"

namespace spdlog::sinks {
class sink;
}

namespace qv_standalone {

/// How log files are kept.
struct LogFileLimits {
    int level = 3;                         ///< records of a higher level are left out
    std::uint64_t max_size = 20ULL << 20;  ///< bytes; a file that would grow beyond is put aside
    std::uint64_t max_files = 10;          ///< files put aside that are kept
};

/// One log category as a rotating file. A line holds time, thread, level, source position and text. Records
/// of the levels 0, 1 and below 0 reach the file at once, others with the next Flush.
///
/// Nothing here throws once the file is open. What can't be written is counted; the first loss and, when
/// writing works again, the number of records lost are reported on the standard error. Any thread may call
/// any operation.
class LogFile final : public NS_LOG_SERVICE1::LogHandle {
  public:
    /// Opens the file, and appends when it exists. Throws std::exception, with the reason, when it can't be
    /// opened.
    LogFile(const std::string& path, const LogFileLimits& limits);
    ~LogFile() override;

    void Write(const std::string& file, const std::string& function, int line, int level,
               const std::string& text) override;
    void WriteFormat(const std::string& file, const std::string& function, int line, int level,
                     const char* format, ...) override __attribute__((format(printf, 6, 7)));

    /// Hands what is still buffered to the system.
    void Flush() noexcept;

    /// The number of records lost since writing last worked.
    std::uint64_t Lost() const;

  private:
    void Put(const std::string& file, int line, int level, const std::string& text);
    void NoteFailure(const char* reason, bool record) noexcept;
    void NoteSuccess() noexcept;

    const std::string m_path;
    const int m_level;
    const std::unique_ptr<spdlog::sinks::sink> m_sink;  // has a lock of its own

    mutable std::mutex m_lock;  // guards what follows
    bool m_failing = false;
    std::uint64_t m_lost = 0;
};

}  // namespace qv_standalone
