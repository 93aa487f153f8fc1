// Stands in for the service manager that programs report to.
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

namespace qv_test {

/// A datagram socket under the path given; whatever is sent there can be taken, one message at a time.
/// One thread uses the object.
class NotifySocket {
  public:
    explicit NotifySocket(const std::string& path) : m_path(path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (path.size() >= sizeof address.sun_path) {
            throw std::invalid_argument("too long for a socket: " + path);
        }
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            throw std::system_error(errno, std::generic_category(), path);
        }
    }
    ~NotifySocket() {
        close(m_socket);
        unlink(m_path.c_str());
    }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    const std::string& Path() const { return m_path; }

    /// The next message; nothing when none comes in time.
    std::optional<std::string> Take(int timeout_ms = 30000) const {
        pollfd entry{m_socket, POLLIN, 0};
        char text[4096];
        if (poll(&entry, 1, timeout_ms) != 1) {
            return std::nullopt;
        }
        const ssize_t length = recv(m_socket, text, sizeof text, 0);
        return length < 0 ? std::nullopt
                          : std::optional<std::string>(std::string(text, static_cast<std::size_t>(length)));
    }

  private:
    const std::string m_path;
    int m_socket = -1;
};

}  // namespace qv_test
