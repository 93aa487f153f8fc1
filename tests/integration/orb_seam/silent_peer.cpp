#include "silent_peer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace qv_test {
namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Check(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

}  // namespace

SilentPeer::SilentPeer() {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Check(m_listener, "socket");
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    Check(bind(m_listener, reinterpret_cast<sockaddr*>(&address), size), "bind");
    Check(listen(m_listener, SOMAXCONN), "listen");
    Check(getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    m_port = ntohs(address.sin_port);
}

SilentPeer::~SilentPeer() {
    for (const int connection : m_connections) {
        close(connection);
    }
    close(m_listener);
}

int SilentPeer::Connect() const {
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    Check(connection, "socket");
    sockaddr_in address = Loopback(m_port);
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) < 0 &&
        errno != EINPROGRESS) {
        close(connection);
        throw std::system_error(errno, std::generic_category(), "connect");
    }
    return connection;
}

void SilentPeer::Fill() {
    Check(listen(m_listener, 0), "listen");
    constexpr int kEnough = 32;
    constexpr int kHangs = 200;  // milliseconds; a connection that the system takes is there in one
    for (int i = 0; i < kEnough; ++i) {
        m_connections.push_back(Connect());
        pollfd made{m_connections.back(), POLLOUT, 0};
        if (poll(&made, 1, kHangs) == 0) {
            return;
        }
    }
    throw std::runtime_error("the system takes every connection");
}

std::string SilentPeer::Reference() const {
    return "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(m_port) + "/nobody";
}

}  // namespace qv_test
