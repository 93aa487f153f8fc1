#include "tests/faults/load/journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace qv_faults {
namespace {

std::string Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace

Journal::Journal(const std::string& path)
    : fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {
    if (fd_ < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

Journal::~Journal() {
    ::close(fd_);
}

void Journal::Note(const std::string& line) const {
    const std::string whole = line + " " + Now() + "\n";
    if (::write(fd_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        std::perror("the journal can't be written");
        std::_Exit(EXIT_FAILURE);
    }
}

}  // namespace qv_faults
