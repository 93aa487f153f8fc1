#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace qv_standalone {

/// What tells one state of a file from another. Size -1 stands for a file that isn't there.
struct FileStamp {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;
    std::int64_t modified_ns = 0;

    bool operator==(const FileStamp& other) const;
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
};

/// The present state of the file `path`. Reentrant.
FileStamp StampOf(const std::string& path);

}  // namespace qv_standalone
