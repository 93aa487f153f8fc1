#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/log_service.h"
#include "standalone/repeat_filter.h"

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
/// of the levels 0 and 1 reach the file at once, those below 0 with the FlushWritten that they ask for,
/// others with the next Flush.
///
/// Of a run of equal records the first few are written; how many followed stands in a line of its own when
/// another record comes or the file is flushed.
///
/// Nothing here throws once the file is open. When writing fails the file is given up, and each Flush tries
/// to open it anew; the records until then are lost and counted. The first loss and, when writing works
/// again, the number of records lost are told on the standard error, the latter in the file, too. Any thread
/// may call any operation.
class LogFile final : public NS_LOG_SERVICE1::LogHandle {
  public:
    /// Opens the file, and appends when it exists. Throws std::exception, with the reason, when it can't be
    /// opened.
    /// @param flushSoon called from Write to ask for a FlushWritten; an empty one has records without a level
    ///        written at once. It is called by many threads and must not call back.
    LogFile(const std::string& path, const LogFileLimits& limits, std::function<void()> flushSoon = {});
    ~LogFile() override;

    void Write(const std::string& file, const std::string& function, int line, int level,
               const std::string& text) override;
    void WriteFormat(const std::string& file, const std::string& function, int line, int level,
                     const char* format, ...) override __attribute__((format(printf, 6, 7)));

    /// Hands what is still buffered to the system.
    void FlushWritten() noexcept;

    /// FlushWritten, and tells how many equal records were left out so far; or tries to open the file again.
    /// To be called regularly.
    void Flush() noexcept;

    /// The number of records lost since writing last worked, at most.
    std::uint64_t Lost() const;

  private:
    using Sink = spdlog::sinks::sink;

    void Put(int level, const std::string& body) noexcept;
    void AskForFlush(int level);
    void PutHeldBack();
    void FlushOpen();
    void Reopen();
    void GiveUp(const char* reason) noexcept;

    const std::string m_path;
    const LogFileLimits m_limits;
    const std::function<void()> m_flushSoon;

    mutable std::mutex m_lock;     // guards what follows
    std::unique_ptr<Sink> m_sink;  // null while writing fails
    RepeatFilter m_repeats;
    std::uint64_t m_buffered = 0;  // records handed to the sink since its last flush
    std::uint64_t m_lost = 0;
    bool m_reported = false;  // the operator knows that writing fails
};

}  // namespace qv_standalone
