#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/log_service.h"
#include "standalone/log_batch.h"
#include "standalone/log_line.h"
#include "standalone/repeat_filter.h"
#include "standalone/rotating_file.h"

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
/// may call any operation. Nobody who logs waits while the file is written, but for records that have to be
/// there at once, and while kMaxWaiting bytes wait already.
class LogFile final : public NS_LOG_SERVICE1::LogHandle {
  public:
    /// Bytes of records that wait, from which on a FlushWritten is asked for whatever their level.
    static constexpr std::size_t kManyWaiting = 256 << 10;
    /// Bytes of records that wait, from which on who logs writes them itself, and waits for the disk.
    static constexpr std::size_t kMaxWaiting = 4 << 20;

    /// Opens the file, and appends when it exists. Throws std::exception, with the reason, when it can't be
    /// opened.
    /// @param flushSoon called from Write to ask for a FlushWritten, without a lock held and not again before
    ///        that; an empty one has records without a level written at once. It must not throw.
    LogFile(const std::string& path, const LogFileLimits& limits, std::function<void()> flushSoon = {});
    ~LogFile() override;

    void Write(const std::string& file, const std::string& function, int line, int level,
               const std::string& text) override;
    void WriteFormat(const std::string& file, const std::string& function, int line, int level,
                     const char* format, ...) override __attribute__((format(printf, 6, 7)));

    /// Hands what waits to the system.
    void FlushWritten() noexcept;

    /// FlushWritten, and tells how many equal records were left out so far; or tries to open the file again.
    /// To be called regularly.
    void Flush() noexcept;

    /// Flush, and from now on no record waits for the next one. For the end of the process.
    void StopWaiting() noexcept;

    /// The number of records lost since writing last worked, at most.
    std::uint64_t Lost() const;

  private:
    enum class Next { kNothing, kAskForFlush, kWrite };

    Next Put(int level, const LogLine& line);
    Next AfterRecord(int level);
    void AppendHeldBack();
    void CountLost() noexcept;
    void TakeHeldBack() noexcept;
    void WriteWaiting() noexcept;
    void Reopen() noexcept;
    void TellOfGap(std::uint64_t lost);
    void GiveUp(const char* reason, std::uint64_t lost) noexcept;

    const std::string m_path;
    const LogFileLimits m_limits;
    const std::function<void()> m_flushSoon;

    std::mutex m_writing;                  // guards what follows; held while the file is written
    std::unique_ptr<RotatingFile> m_file;  // null while writing fails
    LogBatch m_out;                        // what is being written
    bool m_reported = false;               // the operator knows that writing fails

    mutable std::mutex m_lock;  // guards what follows; taken for moments, and after m_writing where both are
    LogBatch m_waiting;
    RepeatFilter m_repeats;
    LogStamp m_stamp;
    bool m_open = true;    // records are taken
    bool m_asked = false;  // a FlushWritten is on its way
    bool m_atOnce = false;
    std::uint64_t m_lost = 0;
};

}  // namespace qv_standalone
