#include "tools/ssl/file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace qv_tools {
namespace {

constexpr const char* kPermissions = "permissions";

std::string ModeText(mode_t mode) {
    std::string digits;
    for (const int shift : {9, 6, 3, 0}) {
        digits += static_cast<char>('0' + ((mode >> shift) & 7U));
    }
    return "mode " + digits;
}

void CheckWriters(const std::string& file, const struct stat& status, Findings& findings) {
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        findings.Error(kPermissions, file, ModeText(status.st_mode) + ": others than its owner may change it",
                       "chmod go-w " + file);
    }
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        findings.Warn(kPermissions, file,
                      "it belongs to another user, with the id " + std::to_string(status.st_uid),
                      "Run this check as the user that the agent runs as, and give that user the file.");
    }
}

/// Who may change the directory may put another file in this one's place.
void CheckDirectory(const std::string& file, Findings& findings) {
    const std::string parent = std::filesystem::path(file).parent_path().string();
    const std::string directory = parent.empty() ? "." : parent;
    struct stat status {};
    if (stat(directory.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0 &&
        (status.st_mode & S_ISVTX) == 0) {
        findings.Error(kPermissions, file,
                       "every user of this machine may replace it, for " + directory + " has " +
                           ModeText(status.st_mode),
                       "chmod o-w " + directory);
    }
}

void CheckReaders(const std::string& file, const struct stat& status, Findings& findings) {
    const std::string mode = ModeText(status.st_mode);
    if ((status.st_mode & S_IROTH) != 0) {
        findings.Error(kPermissions, file, mode + ": every user of this machine may read the secret in it",
                       "chmod 600 " + file + ", and replace the secret if somebody may have read it.");
    } else if ((status.st_mode & S_IRGRP) != 0) {
        findings.Warn(kPermissions, file, mode + ": its group may read the secret in it",
                      "chmod 600 " + file + ", unless the agent reads it as a member of that group.");
    } else {
        findings.Ok(kPermissions, file, mode + ": for its owner alone");
    }
}

}  // namespace

bool CheckReadable(const std::string& check, const std::string& file, Findings& findings) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        findings.Error(check, file, std::string("it can't be found: ") + std::strerror(errno),
                       "Correct the path, or put the file there.");
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        findings.Error(check, file, "it is no regular file", "Name a file.");
        return false;
    }
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        findings.Error(check, file, std::string("it can't be read: ") + std::strerror(errno),
                       "Give the user that the agent runs as the right to read it.");
        return false;
    }
    close(fd);
    return true;
}

void CheckPermissions(const std::string& file, Secrecy secrecy, Findings& findings) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        return;  // it was taken away since it was read
    }
    CheckWriters(file, status, findings);
    CheckDirectory(file, findings);
    if (secrecy == Secrecy::kSecret) {
        CheckReaders(file, status, findings);
    }
}

}  // namespace qv_tools
