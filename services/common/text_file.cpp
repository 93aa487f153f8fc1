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
    return true;
}

/// A new file, under a name of this process's. What stands there already is somebody's trap or was left
/// behind by a process of the same id: it is never written to.
int MakeFile(const std::string& path) {
    constexpr int kTries = 3;
    int fd = -1;
    for (int i = 0; fd < 0 && i < kTries; ++i) {
        fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        if (fd < 0 && (errno != EEXIST || unlink(path.c_str()) != 0)) {
            break;
        }
    }
    return fd;
}

/// A new file beside the one that it is to replace; removed with the object unless it does.
class Temporary {
  public:
    explicit Temporary(const std::string& path)
        : name_(path + ".tmp" + std::to_string(getpid())),
          fd_(MakeFile(name_)),
          reason_(fd_ < 0 ? errno : 0) {}
    ~Temporary() {
        Close();
        unlink(name_.c_str());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    /// What was in the way, as an errno; 0: nothing. After a failure the others do nothing.
    int Reason() const { return reason_; }

    void Write(const std::string& text) {
        if (reason_ == 0 && !(WriteAll(fd_, text) && fsync(fd_) == 0)) {
            reason_ = errno;
        }
    }
    /// It takes the place of that file.
    void Replace(const std::string& path) {
        Close();
        if (reason_ == 0 && rename(name_.c_str(), path.c_str()) != 0) {
            reason_ = errno;
        }
    }

  private:
    void Close() {
        if (fd_ >= 0 && close(fd_) != 0 && reason_ == 0) {
            reason_ = errno;
        }
        fd_ = -1;
    }

    const std::string name_;
    int fd_;
    int reason_;
};

}  // namespace

void RequireWritable(const std::string& path, const std::string& purpose) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        Fail(path, purpose, EISDIR);
    }
    const Temporary temporary(path);
    if (temporary.Reason() != 0) {
        Fail(path, purpose, temporary.Reason());
    }
}

void RequireWritableFolder(const std::string& folder, const std::string& purpose) {
    const Temporary temporary(folder + "/probe");
    if (temporary.Reason() != 0) {
        throw StartError("The folder " + fs::absolute(folder).string() + " for " + purpose +
                         " cannot be written: " + std::strerror(temporary.Reason()) +
                         ". Run this as the folder's owner, or correct its rights or the space on its disk.");
    }
}

void ReplaceTextFile(const std::string& path, const std::string& text, const std::string& purpose) {
    Temporary temporary(path);
    temporary.Write(text);
    temporary.Replace(path);
    if (temporary.Reason() != 0) {
        Fail(path, purpose, temporary.Reason());
    }
}

}  // namespace qv_service
