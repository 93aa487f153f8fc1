#include "standalone/log_file.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>
#include <utility>

#include "standalone/report.h"

// Records are appended to a batch in memory, under a lock that is held for a fraction of a microsecond, and
// the batch is swapped for an empty one to be written: with a lock held during the write, or while the text
// is made, every thread that logs waited for the disk or for one another. Times are taken under the lock, so
// that they never go back from one line to the next.

namespace qv_standalone {
namespace {

constexpr int kNoLevel = -1;
constexpr const char* kOwnPosition = "log_file";

/// A record is appended in no time: for so long it is cheaper to let others run than to sleep and be woken.
std::unique_lock<std::mutex> LockSoon(std::mutex& mutex) {
    constexpr int kTries = 20;
    std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    for (int i = 0; i < kTries && !lock.owns_lock(); ++i) {
        std::this_thread::yield();
        lock.try_lock();
    }
    if (!lock.owns_lock()) {
        lock.lock();
    }
    return lock;
}

std::chrono::system_clock::time_point Now() {
    return std::chrono::system_clock::now();
}

}  // namespace

LogFile::LogFile(const std::string& path, const LogFileLimits& limits, std::function<void()> flushSoon)
    : m_path(path),
      m_limits(limits),
      m_flushSoon(std::move(flushSoon)),
      m_file(std::make_unique<RotatingFile>(path, limits.max_size, limits.max_files)) {}

LogFile::~LogFile() {
    Flush();
    if (const std::uint64_t lost = Lost() + m_waiting.records(); lost > 0) {
        Report(m_path + " is closed; up to " + std::to_string(lost) + " records could not be written to it");
    }
}

void LogFile::Write(const std::string& file, const std::string& /*function*/, int line, int level,
                    const std::string& text) {
    if (level > m_limits.level && level >= 0) {
        return;
    }
    Next next = Next::kNothing;
    try {
        next = Put(level, LogLine(file, line, level, text));
    } catch (const std::exception&) {  // no memory for the text
        CountLost();
    }
    if (next == Next::kAskForFlush) {
        m_flushSoon();
    } else if (next == Next::kWrite) {
        FlushWritten();
    }
}

void LogFile::WriteFormat(const std::string& file, const std::string& function, int line, int level,
                          const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    char* text = nullptr;
    const int length = vasprintf(&text, format, args);
    va_end(args);
    if (length < 0) {
        Write(file, function, line, level,
              std::string("(a record whose format can't be used: ") + format + ")");
        return;
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    Write(file, function, line, level, std::string(text, static_cast<std::size_t>(length)));
}

LogFile::Next LogFile::Put(int level, const LogLine& line) {
    const std::unique_lock<std::mutex> guard = LockSoon(m_lock);
    if (!m_open) {
        ++m_lost;
        return Next::kNothing;
    }
    if (!m_repeats.Continues(line.body())) {
        AppendHeldBack();
        m_repeats.Start(line.body());
    } else if (!m_repeats.Admit()) {
        return Next::kNothing;
    }
    m_waiting.Append(m_stamp.At(Now()), line.text());
    return AfterRecord(level);
}

/// Under the lock. Records of operations come by the thousand, and a write to the system for each would cost
/// more than all the rest of it.
LogFile::Next LogFile::AfterRecord(int level) {
    const bool soon = level < 0 || m_waiting.bytes() >= kManyWaiting;
    const bool atOnce = level == 0 || level == 1 || m_atOnce || m_waiting.bytes() >= kMaxWaiting;
    if (atOnce || (soon && !m_flushSoon)) {
        return Next::kWrite;
    }
    return soon && !std::exchange(m_asked, true) ? Next::kAskForFlush : Next::kNothing;
}

/// Under the lock: tells how many records of a run were left out.
void LogFile::AppendHeldBack() {
    if (const std::uint64_t held = m_repeats.TakeHeldBack(); held > 0) {
        const LogLine line(kOwnPosition, 0, kNoLevel,
                           "the record above came " + std::to_string(held) + " times more");
        m_waiting.Append(m_stamp.At(Now()), line.text());
    }
}

void LogFile::CountLost() noexcept {
    const std::lock_guard<std::mutex> guard(m_lock);
    ++m_lost;
}

void LogFile::FlushWritten() noexcept {
    const std::lock_guard<std::mutex> writing(m_writing);
    WriteWaiting();
}

void LogFile::Flush() noexcept {
    const std::lock_guard<std::mutex> writing(m_writing);
    if (!m_file) {
        Reopen();
        return;
    }
    TakeHeldBack();
    WriteWaiting();
}

void LogFile::StopWaiting() noexcept {
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_atOnce = true;
    }
    Flush();
}

void LogFile::TakeHeldBack() noexcept {
    try {
        const std::lock_guard<std::mutex> guard(m_lock);
        AppendHeldBack();
    } catch (const std::exception&) {  // no memory for the sentence
        CountLost();
    }
}

/// With m_writing held: everything up to now reaches the system, or counts as lost.
void LogFile::WriteWaiting() noexcept {
    if (!m_file) {
        return;
    }
    {
        const std::unique_lock<std::mutex> guard = LockSoon(m_lock);
        m_out.swap(m_waiting);
        m_asked = false;
    }
    if (m_out.empty()) {
        return;
    }
    try {
        m_file->Write(m_out);
    } catch (const std::exception& error) {
        GiveUp(error.what(), m_out.records());
    }
    m_out.Clear();
}

/// With m_writing held and without a file. Records are taken again before the gap is told, so that none gets
/// lost uncounted between the two.
void LogFile::Reopen() noexcept {
    std::uint64_t lost = 0;
    try {
        m_file = std::make_unique<RotatingFile>(m_path, m_limits.max_size, m_limits.max_files);
        {
            const std::lock_guard<std::mutex> guard(m_lock);
            lost = std::exchange(m_lost, 0);
            m_open = true;
        }
        TellOfGap(lost);
    } catch (const std::exception& error) {
        GiveUp(error.what(), lost);
        return;
    }
    WriteWaiting();
}

/// With m_writing held and a file that was just opened: proves that writing works.
void LogFile::TellOfGap(std::uint64_t lost) {
    const LogLine line(kOwnPosition, 0, 1, "up to " + std::to_string(lost) + " records are missing here");
    LogStamp stamp;
    std::string begin = "\n";  // what failed before may have left half a line
    begin += stamp.At(Now());
    LogBatch gap;
    gap.Append(begin, line.text());
    m_file->Write(gap);
    Report("writes to " + m_path + " again; up to " + std::to_string(lost) + " records were lost");
    m_reported = false;
}

/// With m_writing held. What was to be written may have reached the file in part; what waits is kept for the
/// next file as long as there is room.
void LogFile::GiveUp(const char* reason, std::uint64_t lost) noexcept {
    m_file.reset();
    {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_open = false;
        m_lost += lost;
        if (m_waiting.bytes() >= kMaxWaiting) {
            m_lost += m_waiting.records();
            m_waiting.Clear();
        }
    }
    try {
        if (!m_reported) {
            Report("can't write to " + m_path + " (" + reason +
                   "); the agent goes on, and records are lost until there is a way to write them again");
            m_reported = true;
        }
    } catch (const std::exception&) {
        // No memory for the sentence; the next failure tells.
    }
}

std::uint64_t LogFile::Lost() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_lost;
}

}  // namespace qv_standalone
