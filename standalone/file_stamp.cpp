#include "standalone/file_stamp.h"

#include <sys/stat.h>

namespace qv_standalone {

bool FileStamp::operator==(const FileStamp& other) const {
    return path == other.path && device == other.device && inode == other.inode && size == other.size &&
           modified_ns == other.modified_ns;
}

FileStamp StampOf(const std::string& path) {
    FileStamp stamp;
    stamp.path = path;
    struct stat status {};
    if (!path.empty() && stat(path.c_str(), &status) == 0) {
        stamp.device = status.st_dev;
        stamp.inode = status.st_ino;
        stamp.size = status.st_size;
        stamp.modified_ns = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    }
    return stamp;
}

}  // namespace qv_standalone
