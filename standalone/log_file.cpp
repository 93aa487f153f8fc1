#include "standalone/log_file.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "standalone/record_text.h"
#include "standalone/report.h"

namespace qv_standalone {
namespace {

constexpr const char* kPattern = "%Y-%m-%dT%H:%M:%S.%e%z [%t] %v";

/// Companion processes that the agent starts mustn't keep log files open.
void CloseOnExec(const spdlog::filename_t& /*path*/, std::FILE* file) {
    fcntl(fileno(file), F_SETFD, FD_CLOEXEC);
}

std::unique_ptr<spdlog::sinks::sink> OpenSink(const std::string& path, const LogFileLimits& limits) {
    spdlog::file_event_handlers handlers;
    handlers.after_open = CloseOnExec;
    auto sink = std::make_unique<spdlog::sinks::rotating_file_sink_mt>(path, limits.max_size,
                                                                       limits.max_files, false, handlers);
    sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(kPattern));
    return sink;
}

}  // namespace

LogFile::LogFile(const std::string& path, const LogFileLimits& limits)
    : m_path(path), m_level(limits.level), m_sink(OpenSink(path, limits)) {}

LogFile::~LogFile() {
    Flush();
    if (const std::uint64_t lost = Lost(); lost > 0) {
        Report(m_path + " is closed; " + std::to_string(lost) + " records could not be written to it");
    }
}

void LogFile::Write(const std::string& file, const std::string& /*function*/, int line, int level,
                    const std::string& text) {
    if (level > m_level && level >= 0) {
        return;
    }
    try {
        Put(file, line, level, text);
        NoteSuccess();
    } catch (const std::exception& error) {
        NoteFailure(error.what(), true);
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
        NoteFailure("the record's format can't be used", true);
        return;
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    Write(file, function, line, level, std::string(text, static_cast<std::size_t>(length)));
}

void LogFile::Put(const std::string& file, int line, int level, const std::string& text) {
    std::string body = std::to_string(level);
    body += ' ';
    body += LevelName(level);
    body += ' ';
    body += OneLine(file);
    body += ':';
    body += std::to_string(line);
    body += ' ';
    body += RecordText(text);
    m_sink->log(spdlog::details::log_msg(spdlog::string_view_t(), spdlog::level::info, body));
    if (level <= 1) {
        m_sink->flush();
    }
}

void LogFile::Flush() noexcept {
    try {
        m_sink->flush();
    } catch (const std::exception& error) {
        NoteFailure(error.what(), false);
    }
}

std::uint64_t LogFile::Lost() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_lost;
}

void LogFile::NoteFailure(const char* reason, bool record) noexcept {
    std::lock_guard<std::mutex> guard(m_lock);
    m_lost += record ? 1 : 0;
    if (std::exchange(m_failing, true)) {
        return;
    }
    try {
        Report("can't write to " + m_path + " (" + reason +
               "); the agent goes on, and records are lost until there is a way to write them again");
    } catch (const std::exception&) {
        // No memory for the sentence; the count is kept and told later.
    }
}

void LogFile::NoteSuccess() noexcept {
    std::lock_guard<std::mutex> guard(m_lock);
    if (!m_failing) {
        return;
    }
    try {
        Report("writes to " + m_path + " again; " + std::to_string(m_lost) + " records were lost");
    } catch (const std::exception&) {
        return;
    }
    m_failing = false;
    m_lost = 0;
}

}  // namespace qv_standalone
