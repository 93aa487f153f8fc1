#include "standalone/rotating_file.h"

#include <fcntl.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <algorithm>
#include <cstdio>

namespace qv_standalone {
namespace {

/// Companion processes that the agent starts mustn't keep log files open. The buffer makes a batch of a busy
/// agent a matter of few writes to the system.
void PrepareFile(const spdlog::filename_t& /*path*/, std::FILE* file) {
    constexpr std::size_t kBuffer = 256 << 10;
    fcntl(fileno(file), F_SETFD, FD_CLOEXEC);
    std::setvbuf(file, nullptr, _IOFBF, kBuffer);
}

// The sink takes several records as if they were one; the file is put aside that much earlier at most.
constexpr std::size_t kLargestPart = 64 << 10;
constexpr std::uint64_t kPartsPerFile = 64;

/// Records come with all that their lines hold.
std::unique_ptr<spdlog::formatter> TextAsItStands() {
    return std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, "");
}

std::unique_ptr<spdlog::sinks::sink> OpenSink(const std::string& path, std::uint64_t max_size,
                                              std::uint64_t max_files) {
    spdlog::file_event_handlers handlers;
    handlers.after_open = PrepareFile;
    auto sink =
        std::make_unique<spdlog::sinks::rotating_file_sink_st>(path, max_size, max_files, false, handlers);
    sink->set_formatter(TextAsItStands());
    return sink;
}

}  // namespace

RotatingFile::RotatingFile(const std::string& path, std::uint64_t max_size, std::uint64_t max_files)
    : m_part(std::min(kLargestPart, static_cast<std::size_t>(max_size / kPartsPerFile))),
      m_sink(OpenSink(path, max_size, max_files)) {}

RotatingFile::~RotatingFile() = default;

void RotatingFile::Write(const LogBatch& records) {
    const spdlog::log_clock::time_point no_time;  // the text has its own
    records.ForEachPart(m_part, [this, no_time](std::string_view text) {
        m_sink->log(spdlog::details::log_msg(no_time, spdlog::source_loc(), spdlog::string_view_t(),
                                             spdlog::level::info,
                                             spdlog::string_view_t(text.data(), text.size())));
    });
    m_sink->flush();
}

}  // namespace qv_standalone
