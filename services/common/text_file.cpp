#include "services/common/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "services/common/start_error.h"

namespace qv_service {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& path, const std::string& purpose, int reason) {
    throw StartError("The file " + fs::absolute(path).string() + " for " + purpose + " cannot be written: " +
                     std::strerror(reason) + ". Correct the path, its rights or the space on its disk.");
}

int OpenTemporary(const std::string& temporary) {
    return open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
}

std::string TemporaryName(const std::string& path) {
    return path + ".tmp" + std::to_string(getpid());
}

bool WriteAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return fsync(fd) == 0;
}

}  // namespace

void RequireWritable(const std::string& path, const std::string& purpose) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        Fail(path, purpose, EISDIR);
    }
    const std::string temporary = TemporaryName(path);
    const int fd = OpenTemporary(temporary);
    if (fd < 0) {
        Fail(path, purpose, errno);
    }
    close(fd);
    unlink(temporary.c_str());
}

void ReplaceTextFile(const std::string& path, const std::string& text, const std::string& purpose) {
    const std::string temporary = TemporaryName(path);
    const int fd = OpenTemporary(temporary);
    if (fd < 0) {
        Fail(path, purpose, errno);
    }
    int reason = WriteAll(fd, text) ? 0 : errno;
    if (close(fd) != 0 && reason == 0) {
        reason = errno;
    }
    if (reason == 0 && rename(temporary.c_str(), path.c_str()) != 0) {
        reason = errno;
    }
    if (reason != 0) {
        unlink(temporary.c_str());
        Fail(path, purpose, reason);
    }
}

}  // namespace qv_service
