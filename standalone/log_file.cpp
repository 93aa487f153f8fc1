#include "standalone/log_file.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

#include "standalone/record_text.h"
#include "standalone/report.h"

namespace qv_standalone {
namespace {

constexpr const char* kPattern = "%Y-%m-%dT%H:%M:%S.%e%z [%t] %v";

constexpr int kNoLevel = -1;

/// Companion processes that the agent starts mustn't keep log files open. The buffer holds what a busy agent
/// writes between two flushes, so that a record doesn't wait for the system.
void PrepareFile(const spdlog::filename_t& /*path*/, std::FILE* file) {
    constexpr std::size_t kBuffer = 256 << 10;
    fcntl(fileno(file), F_SETFD, FD_CLOEXEC);
    std::setvbuf(file, nullptr, _IOFBF, kBuffer);
}

std::unique_ptr<spdlog::formatter> Formatter(const std::string& before) {
    return std::make_unique<spdlog::pattern_formatter>(before + kPattern);
}

/// Not locked by itself: LogFile's own lock covers it and the counters together.
std::unique_ptr<spdlog::sinks::sink> OpenSink(const std::string& path, const LogFileLimits& limits) {
    spdlog::file_event_handlers handlers;
    handlers.after_open = PrepareFile;
    auto sink = std::make_unique<spdlog::sinks::rotating_file_sink_st>(path, limits.max_size,
                                                                       limits.max_files, false, handlers);
    sink->set_formatter(Formatter(""));
    return sink;
}

/// A record is put into the buffer in no time: for so long it is cheaper to let others run than to sleep and
/// be woken.
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

spdlog::details::log_msg Message(const std::string& body) {
    return spdlog::details::log_msg(spdlog::string_view_t(), spdlog::level::info, body);
}

std::string Body(const std::string& file, int line, int level, const std::string& text) {
    std::string body = std::to_string(level);
    body += ' ';
    body += LevelName(level);
    body += ' ';
    body += OneLine(file);
    body += ':';
    body += std::to_string(line);
    body += ' ';
    body += RecordText(text);
    return body;
}

}  // namespace

LogFile::LogFile(const std::string& path, const LogFileLimits& limits, std::function<void()> flushSoon)
    : m_path(path), m_limits(limits), m_flushSoon(std::move(flushSoon)), m_sink(OpenSink(path, limits)) {}

LogFile::~LogFile() {
    Flush();
    if (const std::uint64_t lost = Lost(); lost > 0) {
        Report(m_path + " is closed; up to " + std::to_string(lost) + " records could not be written to it");
    }
}

void LogFile::Write(const std::string& file, const std::string& /*function*/, int line, int level,
                    const std::string& text) {
    if (level > m_limits.level && level >= 0) {
        return;
    }
    try {
        Put(level, Body(file, line, level, text));
    } catch (const std::exception&) {  // no memory for the text
        std::lock_guard<std::mutex> guard(m_lock);
        ++m_lost;
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

void LogFile::Put(int level, const std::string& body) noexcept {
    const std::unique_lock<std::mutex> guard = LockSoon(m_lock);
    if (!m_sink) {
        ++m_lost;
        return;
    }
    try {
        if (!m_repeats.Continues(body)) {
            PutHeldBack();
            m_repeats.Start(body);
        } else if (!m_repeats.Admit()) {
            return;
        }
        ++m_buffered;
        m_sink->log(Message(body));
        AskForFlush(level);
    } catch (const std::exception& error) {
        GiveUp(error.what());
    }
}

/// Under the lock. Records of operations come by the thousand, and a write to the system for each would cost
/// more than all the rest of it.
void LogFile::AskForFlush(int level) {
    if (level < 0 && m_flushSoon) {
        m_flushSoon();
    } else if (level <= 1) {
        FlushOpen();
    }
}

void LogFile::FlushWritten() noexcept {
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_sink) {
        return;
    }
    try {
        FlushOpen();
    } catch (const std::exception& error) {
        GiveUp(error.what());
    }
}

/// Under the lock: tells how many records of a run were left out.
void LogFile::PutHeldBack() {
    if (const std::uint64_t held = m_repeats.TakeHeldBack(); held > 0) {
        ++m_buffered;
        m_sink->log(Message(
            Body("log_file", 0, kNoLevel, "the record above came " + std::to_string(held) + " times more")));
    }
}

void LogFile::Flush() noexcept {
    std::unique_lock<std::mutex> lock(m_lock);
    try {
        if (m_sink) {
            PutHeldBack();
            FlushOpen();
            return;
        }
        // Opening takes its time where it fails; nobody who logs waits for that.
        lock.unlock();
        auto sink = OpenSink(m_path, m_limits);
        lock.lock();
        if (!m_sink) {
            m_sink = std::move(sink);
            Reopen();
        }
    } catch (const std::exception& error) {
        if (!lock.owns_lock()) {
            lock.lock();
        }
        GiveUp(error.what());
    }
}

/// Under the lock: everything up to now reaches the system, or an exception tells that it doesn't.
void LogFile::FlushOpen() {
    if (m_buffered > 0) {
        m_sink->flush();
        m_buffered = 0;
    }
}

/// Under the lock, with a sink that was just opened: proves that writing works by telling of the gap.
void LogFile::Reopen() {
    m_sink->set_formatter(Formatter("\n"));  // what failed before may have left half a line
    m_sink->log(
        Message(Body("log_file", 0, 1, "up to " + std::to_string(m_lost) + " records are missing here")));
    m_sink->flush();
    m_sink->set_formatter(Formatter(""));
    Report("writes to " + m_path + " again; up to " + std::to_string(m_lost) + " records were lost");
    m_lost = 0;
    m_reported = false;
}

/// Under the lock. A failed flush has thrown away what was buffered, so that counts as lost with the record
/// at hand.
void LogFile::GiveUp(const char* reason) noexcept {
    m_lost += std::exchange(m_buffered, 0);
    try {
        if (!m_reported) {
            Report("can't write to " + m_path + " (" + reason +
                   "); the agent goes on, and records are lost until there is a way to write them again");
            m_reported = true;
        }
    } catch (const std::exception&) {
        // No memory for the sentence; the next failure tells.
    }
    m_sink.reset();
}

std::uint64_t LogFile::Lost() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_lost;
}

}  // namespace qv_standalone
