#include "tests/support/free_port.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <system_error>

namespace qv_test {
namespace {

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int AskSystem() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        Fail("socket");
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound = bind(fd, generic, length) == 0 && getsockname(fd, generic, &length) == 0;
    close(fd);
    if (!bound) {
        Fail("bind to a free port");
    }
    return ntohs(address.sin_port);
}

}  // namespace

int FreePort() {
    static std::mutex lock;
    static std::set<int> given;
    std::lock_guard<std::mutex> guard(lock);
    int port = AskSystem();
    while (!given.insert(port).second) {
        port = AskSystem();
    }
    return port;
}

}  // namespace qv_test
