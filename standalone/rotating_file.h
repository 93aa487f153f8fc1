#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "standalone/log_batch.h"

namespace spdlog::sinks {
class sink;
}

namespace qv_standalone {

/// A file to which records are appended, and which is put aside, between two records, when it would grow
/// beyond a size. It is closed in programs that the process starts. Used by one thread at a time.
///
/// What can't be written raises std::exception with the reason; the object is of no more use then, and the
/// file may end with a part of what was to be written.
class RotatingFile {
  public:
    /// Opens the file, and appends when it exists.
    /// @param max_size bytes, above 0
    /// @param max_files how many files put aside are kept
    RotatingFile(const std::string& path, std::uint64_t max_size, std::uint64_t max_files);
    ~RotatingFile();

    /// Hands the records to the system.
    void Write(const LogBatch& records);

  private:
    const std::size_t m_part;  // so many bytes of records at once
    const std::unique_ptr<spdlog::sinks::sink> m_sink;
};

}  // namespace qv_standalone
