#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "standalone/log_batch.h"

namespace qv_standalone {

class RotatingFile;

struct SpanFileOptions {
    std::string path;
    std::uint64_t max_size = 20ULL << 20;  ///< bytes; a file that would grow beyond is put aside
    std::uint64_t max_files = 10;          ///< files put aside that are kept
};

/// A rotating file with one span per line. While it can't be written to, spans are lost and counted, and it
/// is tried again with the spans that come later, at most once per second. The first loss is told, and, when
/// writing works again, how many were lost. What a crash or a full disk left of a line is ended before
/// another span is written. Nothing here throws. For one thread.
class SpanFile {
  public:
    using Clock = std::chrono::steady_clock;
    using Tell = std::function<void(const std::string&)>;

    /// The file is opened with the first span.
    SpanFile(SpanFileOptions options, Tell tell, std::function<Clock::time_point()> now = Clock::now);
    ~SpanFile();

    /// Writes the lines, given without their ends, and hands them to the system.
    void Write(const std::vector<std::string>& lines) noexcept;

    /// The number of spans lost since writing last worked, at most.
    std::uint64_t Lost() const { return m_lost; }

  private:
    void WriteOrThrow(const std::vector<std::string>& lines);
    void Open();
    void GiveUp(std::uint64_t lines, const char* reason) noexcept;

    const SpanFileOptions m_options;
    const Tell m_tell;
    const std::function<Clock::time_point()> m_now;
    std::unique_ptr<RotatingFile> m_file;  // null while writing fails
    LogBatch m_batch;                      // what is being written
    std::uint64_t m_lost = 0;
    bool m_failing = false;
    Clock::time_point m_tried;
};

}  // namespace qv_standalone
