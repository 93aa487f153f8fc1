#include "services/naming/data_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>
#include <utility>

#include "services/common/state_directory.h"
#include "services/common/text_file.h"
#include "services/naming/common_parts.h"

namespace qv_naming {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kLockRetry{20};

constexpr StateDirectory kBindings{"QV_NAMING_DATA", "qv_naming", "the bindings"};

std::string FirstLine(const fs::path& file) {
    std::ifstream input(file);
    std::string line;
    return std::getline(input, line) ? line : "unknown";
}

[[noreturn]] void FailFile(const std::string& action, const fs::path& path, const std::string& reason) {
    throw StartError(
        action + " " + path.string() + " failed: " + reason +
        ". The bindings would be lost at the next start, so the naming service does not run. Correct "
        "the rights or the space of the directory, or name another with \"-u\".");
}

fs::path LinkTo(const fs::path& file) {
    return file.string() + ".start";
}

// A hard link takes no space, and the name server replaces its files instead of rewriting them.
void Link(const fs::path& file) {
    std::error_code error;
    fs::remove(LinkTo(file), error);
    if (fs::exists(file, error)) {
        fs::create_hard_link(file, LinkTo(file), error);
        if (error) {
            FailFile("Keeping the bindings under", LinkTo(file), error.message());
        }
    }
}

// What wasn't there goes.
void BringBack(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(LinkTo(file), error)) {
        fs::remove(file, error);
        return;
    }
    // POSIX leaves both names when they are links to one file, hence the second step.
    fs::rename(LinkTo(file), file, error);
    fs::remove(LinkTo(file), error);
}

}  // namespace

fs::path ChooseDataDirectory(const Settings& settings) {
    return ChooseStateDirectory(kBindings, settings.data_directory, settings.ior_file,
                                "naming-" + std::to_string(settings.port));
}

DataDirectory::DataDirectory(fs::path directory, std::chrono::milliseconds patience)
    : directory_(std::move(directory)) {
    Create();
    Lock(patience);
    try {
        RequireWritableFolder(directory_, "the bindings of the naming service");
    } catch (...) {
        close(lock_);
        throw;
    }
}

DataDirectory::~DataDirectory() {
    close(lock_);
}

fs::path DataDirectory::BindingFile() const {
    return directory_ / "omninames.dat";
}

fs::path DataDirectory::BackupFile() const {
    return directory_ / "omninames.bak";
}

bool DataDirectory::HasBackup() const {
    std::error_code unreadable;
    return fs::exists(remembers_ ? LinkTo(BackupFile()) : BackupFile(), unreadable);
}

void DataDirectory::Create() const {
    std::error_code error;
    fs::create_directories(directory_, error);
    if (error) {
        FailFile("Making the data directory", directory_, error.message());
    }
}

void DataDirectory::Lock(std::chrono::milliseconds patience) {
    const fs::path file = directory_ / "lock";
    // Not close-on-exec: the name server holds the lock as well.
    lock_ = open(file.c_str(), O_RDWR | O_CREAT, 0644);
    if (lock_ < 0) {
        FailFile("Opening", file, std::strerror(errno));
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            const std::string holder = FirstLine(file);
            close(lock_);
            throw StartError(
                "The data directory " + directory_.string() +
                " is held by a naming service that already runs (process " + holder +
                "), and two would spoil each other's bindings. Use or end that one, or name another "
                "directory with \"-u\".");
        }
        std::this_thread::sleep_for(kLockRetry);
    }
    const std::string holder = std::to_string(getpid()) + "\n";
    if (ftruncate(lock_, 0) != 0 ||
        pwrite(lock_, holder.data(), holder.size(), 0) != static_cast<ssize_t>(holder.size())) {
        const int reason = errno;
        close(lock_);
        FailFile("Writing", file, std::strerror(reason));
    }
}

std::string DataDirectory::Repair() {
    std::error_code error;
    if (!fs::exists(BindingFile(), error) && fs::exists(BackupFile(), error)) {
        fs::rename(BackupFile(), BindingFile(), error);
        if (error) {
            FailFile("Bringing back the bindings from", BackupFile(), error.message());
        }
        return "The last naming service was interrupted while it replaced its binding file; the bindings "
               "came back "
               "from its backup." +
               DropCutRecord();
    }
    return DropCutRecord();
}

std::string DataDirectory::DropCutRecord() {
    std::ifstream input(BindingFile(), std::ios::binary);
    if (!input) {
        return {};
    }
    const std::string text{std::istreambuf_iterator<char>(input), {}};
    const auto last_end = text.rfind('\n');
    if (last_end == std::string::npos || last_end + 1 == text.size()) {
        return {};
    }
    const fs::path kept = BindingFile().string() + ".damaged";
    std::error_code error;
    fs::copy_file(BindingFile(), kept, fs::copy_options::overwrite_existing, error);
    if (error) {
        FailFile("Keeping a copy of", BindingFile(), error.message());
    }
    ReplaceTextFile(BindingFile(), text.substr(0, last_end + 1), "the bindings of the naming service");
    return "The last record of the binding file was cut short and is left out; the file as it was is " +
           kept.string() + ".";
}

void DataDirectory::Remember() {
    Link(BindingFile());
    Link(BackupFile());
    remembers_ = true;
}

void DataDirectory::Commit() {
    remembers_ = false;
    std::error_code error;
    fs::remove(LinkTo(BindingFile()), error);
    fs::remove(LinkTo(BackupFile()), error);
}

void DataDirectory::RollBack() {
    if (!std::exchange(remembers_, false)) {
        return;
    }
    BringBack(BindingFile());
    BringBack(BackupFile());
}

}  // namespace qv_naming
