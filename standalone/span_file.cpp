#include "standalone/span_file.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

namespace qv_standalone {
namespace {

constexpr std::chrono::seconds kBetweenTries{1};

/// Companion processes that the agent starts mustn't keep the file open.
void CloseOnExec(const spdlog::filename_t& /*path*/, std::FILE* file) {
    fcntl(fileno(file), F_SETFD, FD_CLOEXEC);
}

bool EndsInsideALine(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() <= 0) {
        return false;
    }
    file.seekg(-1, std::ios::end);
    return file.get() != '\n';
}

void WriteLine(spdlog::sinks::sink& sink, const std::string& line) {
    sink.log(spdlog::details::log_msg(spdlog::string_view_t(), spdlog::level::info, line));
}

}  // namespace

SpanFile::SpanFile(SpanFileOptions options, Tell tell, std::function<Clock::time_point()> now)
    : m_options(std::move(options)), m_tell(std::move(tell)), m_now(std::move(now)) {}

SpanFile::~SpanFile() {
    if (m_lost > 0) {
        m_tell(m_options.path + " is closed; up to " + std::to_string(m_lost) +
               " spans could not be written to it");
    }
}

void SpanFile::Write(const std::vector<std::string>& lines) noexcept {
    if (lines.empty()) {
        return;
    }
    if (!m_sink && m_failing && m_now() - m_tried < kBetweenTries) {
        m_lost += lines.size();
        return;
    }
    try {
        WriteOrThrow(lines);
    } catch (const std::exception& error) {
        GiveUp(lines.size(), error.what());
    }
}

void SpanFile::WriteOrThrow(const std::vector<std::string>& lines) {
    if (!m_sink) {
        Open();
    }
    for (const std::string& line : lines) {
        WriteLine(*m_sink, line);
    }
    m_sink->flush();
    if (m_failing) {
        m_tell("writes to " + m_options.path + " again; up to " + std::to_string(m_lost) +
               " spans were lost");
        m_failing = false;
        m_lost = 0;
    }
}

void SpanFile::Open() {
    m_tried = m_now();
    const std::filesystem::path path = m_options.path;
    if (path.has_parent_path()) {
        std::filesystem::create_directories(path.parent_path());
    }
    const bool inside = std::filesystem::is_regular_file(path) && EndsInsideALine(m_options.path);
    spdlog::file_event_handlers handlers;
    handlers.after_open = CloseOnExec;
    m_sink = std::make_unique<spdlog::sinks::rotating_file_sink_st>(m_options.path, m_options.max_size,
                                                                    m_options.max_files, false, handlers);
    m_sink->set_formatter(std::make_unique<spdlog::pattern_formatter>("%v"));
    if (inside) {
        WriteLine(*m_sink, "");
    }
}

void SpanFile::GiveUp(std::uint64_t lines, const char* reason) noexcept {
    m_lost += lines;
    m_sink.reset();
    m_tried = m_now();
    if (std::exchange(m_failing, true)) {
        return;
    }
    try {
        m_tell("can't write to " + m_options.path + " (" + reason +
               "); requests go on, and their spans are lost until there is a way to write them again");
    } catch (const std::exception&) {
        m_failing = false;  // no memory for the sentence; the next failure tells
    }
}

}  // namespace qv_standalone
