#include "standalone/user_edit.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "standalone/user_file.h"

namespace qv_standalone {
namespace {

[[noreturn]] void Fail(const std::string& path, const char* what) {
    throw std::runtime_error(path + ": " + what + ": " + std::strerror(errno));
}

/// Keeps other runs of the program from changing files of the same directory meanwhile.
class DirectoryLock {
  public:
    explicit DirectoryLock(const std::string& directory)
        : m_fd(open(directory.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_fd < 0 || flock(m_fd, LOCK_EX) != 0) {
            const int error = errno;
            Close();
            errno = error;
            Fail(directory, "can't be locked");
        }
    }
    ~DirectoryLock() { Close(); }
    DirectoryLock(const DirectoryLock&) = delete;
    DirectoryLock& operator=(const DirectoryLock&) = delete;

    void Sync() const { fsync(m_fd); }

  private:
    void Close() const {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    const int m_fd;
};

std::string DirectoryOf(const std::string& path) {
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

std::string ReadIfThere(const std::string& path) {
    if (!std::filesystem::exists(path)) {
        return "";
    }
    std::ifstream in(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        Fail(path, "can't be read");
    }
    return text;
}

void WriteAll(int fd, const std::string& path, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) {
            Fail(path, "can't be written");
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    if (fsync(fd) != 0) {
        Fail(path, "can't be written");
    }
}

/// Group and its rights stay those of the former file, so that the agent still may read it.
void TakeOver(int fd, const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return;
    }
    if (fchown(fd, status.st_uid, status.st_gid) != 0 || fchmod(fd, status.st_mode & 0770U) != 0) {
        Fail(path, "its owner and rights can't be kept");
    }
}

void Replace(const std::string& path, const std::string& text, const DirectoryLock& lock) {
    UserFile::Parse(text, path);  // whatever happens, no file goes out that the agent refuses
    std::string next = path + ".XXXXXX";
    const int fd = mkstemp(next.data());
    if (fd < 0) {
        Fail(path, "no file can be made beside it");
    }
    try {
        TakeOver(fd, path);
        WriteAll(fd, path, text);
        if (rename(next.c_str(), path.c_str()) != 0) {
            Fail(path, "can't be replaced");
        }
    } catch (...) {
        close(fd);
        unlink(next.c_str());
        throw;
    }
    close(fd);
    lock.Sync();
}

bool BeginsTable(const std::string& line) {
    const std::size_t at = line.find_first_not_of(" \t");
    return at != std::string::npos && line[at] == '[';
}

/// The text without the user's table; comments behind it belong to what follows.
std::string Without(const std::string& text, const UserFile& users, const std::string& name) {
    const auto found = users.Lines().find(name);
    if (found == users.Lines().end()) {
        return text;
    }
    std::istringstream lines(text);
    std::string kept;
    std::string line;
    bool inside = false;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        const std::size_t at = line.find_first_not_of(" \t");
        const bool comment = at != std::string::npos && line[at] == '#';
        inside = number == found->second || (inside && !BeginsTable(line) && !comment);
        kept += inside ? "" : line + "\n";
    }
    if (UserFile::Parse(kept, "the new file").Lines().size() + 1 != users.Lines().size()) {
        throw std::runtime_error(
            "the file is laid out in a way that the tool can't edit: one [[user]] with "
            "its two lines below is expected");
    }
    return kept;
}

}  // namespace

void RequireDirectoryOf(const std::string& path) {
    const std::string directory = DirectoryOf(path);
    std::error_code unreadable;
    if (!std::filesystem::is_directory(directory, unreadable)) {
        throw std::runtime_error("the directory " + directory +
                                 " does not exist; make it, or name another file");
    }
}

void PutUser(const std::string& path, const std::string& name, const std::string& hash) {
    RequireDirectoryOf(path);
    const DirectoryLock lock(DirectoryOf(path));
    std::string text = ReadIfThere(path);
    text = Without(text, UserFile::Parse(text, path), name);
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    Replace(path, text + "[[user]]\nname = \"" + name + "\"\npassword_hash = \"" + hash + "\"\n", lock);
}

bool RemoveUser(const std::string& path, const std::string& name) {
    RequireDirectoryOf(path);
    const DirectoryLock lock(DirectoryOf(path));
    const std::string text = ReadIfThere(path);
    const UserFile users = UserFile::Parse(text, path);
    if (users.HashOf(name) == nullptr) {
        return false;
    }
    Replace(path, Without(text, users, name), lock);
    return true;
}

}  // namespace qv_standalone
