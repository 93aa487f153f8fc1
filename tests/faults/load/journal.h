// What a program of the fault campaign writes down for the accounts.
#pragma once

#include <cstdint>
#include <string>

namespace qv_faults {

/// Lines in a file, each there as a whole once Note has returned, also when the process is killed then. Any
/// thread may call. The campaign keeps it apart from the disks that it fills; a line that can't be written
/// ends the process.
class Journal {
  public:
    /// Continues the file or makes it. Raises std::system_error.
    explicit Journal(const std::string& path);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// `line` and behind it the time: milliseconds of the clock that never jumps.
    void Note(const std::string& line) const;

  private:
    const int fd_;
};

}  // namespace qv_faults
