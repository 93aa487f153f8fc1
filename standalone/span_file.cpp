#include "standalone/span_file.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "standalone/rotating_file.h"

namespace qv_standalone {
namespace {

constexpr std::chrono::seconds kBetweenTries{1};

bool EndsInsideALine(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file || file.tellg() <= 0) {
        return false;
    }
    file.seekg(-1, std::ios::end);
    return file.get() != '\n';
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
    if (!m_file && m_failing && m_now() - m_tried < kBetweenTries) {
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
    m_batch.Clear();
    if (!m_file) {
        Open();
    }
    for (const std::string& line : lines) {
        m_batch.Append(line, "\n");
    }
    m_file->Write(m_batch);
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
    if (std::filesystem::is_regular_file(path) && EndsInsideALine(m_options.path)) {
        m_batch.Append("", "\n");
    }
    m_file = std::make_unique<RotatingFile>(m_options.path, m_options.max_size, m_options.max_files);
}

void SpanFile::GiveUp(std::uint64_t lines, const char* reason) noexcept {
    m_lost += lines;
    m_file.reset();
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
