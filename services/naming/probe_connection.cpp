#include "services/naming/probe_connection.h"

#include <netdb.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace qv_naming {

ProbeConnection::ProbeConnection(const std::string& address, std::uint16_t port,
                                 std::chrono::milliseconds limit, SSL_CTX* context)
    : deadline_(std::chrono::steady_clock::now() + limit) {
    std::string host = address.empty() ? "127.0.0.1" : address;
    if (host.front() == '[') {
        host = host.substr(1, host.size() - 2);
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* info = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &info) != 0) {
        return;
    }
    fd_ = socket(info->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    connecting_ = fd_ >= 0 && (connect(fd_, info->ai_addr, info->ai_addrlen) == 0 || errno == EINPROGRESS);
    freeaddrinfo(info);
    if (context != nullptr && connecting_) {
        ssl_.reset(SSL_new(context));
        connecting_ = ssl_ && SSL_set_fd(ssl_.get(), fd_) == 1;
        SSL_set_connect_state(ssl_.get());
    }
}

ProbeConnection::~ProbeConnection() {
    ssl_.reset();
    if (fd_ >= 0) {
        close(fd_);
    }
}

bool ProbeConnection::WaitFor(short events) const {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
    pollfd entry{fd_, events, 0};
    return left.count() > 0 && poll(&entry, 1, static_cast<int>(left.count())) == 1;
}

// A step of OpenSSL, again each time that it could not go on for want of the peer.
template <class Step>
bool ProbeConnection::Repeat(Step step) {
    for (;;) {
        ERR_clear_error();
        const int result = step();
        if (result > 0) {
            return true;
        }
        const int error = SSL_get_error(ssl_.get(), result);
        ERR_clear_error();
        const bool reading = error == SSL_ERROR_WANT_READ;
        if ((!reading && error != SSL_ERROR_WANT_WRITE) || !WaitFor(reading ? POLLIN : POLLOUT)) {
            return false;
        }
    }
}

bool ProbeConnection::Send(const char* data, std::size_t size) {
    if (!connecting_ || !WaitFor(POLLOUT)) {
        return false;
    }
    if (ssl_) {
        return Repeat([&] { return SSL_write(ssl_.get(), data, static_cast<int>(size)); });
    }
    return send(fd_, data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

bool ProbeConnection::Receive(unsigned char* data, std::size_t size) {
    std::size_t have = 0;
    while (have < size) {
        std::size_t got = 0;
        if (ssl_) {
            if (!Repeat([&] { return SSL_read_ex(ssl_.get(), data + have, size - have, &got); })) {
                return false;
            }
        } else {
            const ssize_t received = WaitFor(POLLIN) ? recv(fd_, data + have, size - have, 0) : 0;
            if (received <= 0) {
                return false;
            }
            got = static_cast<std::size_t>(received);
        }
        have += got;
    }
    return true;
}

bool ProbeConnection::HeardSsl() const {
    BIO* const input = ssl_ ? SSL_get_rbio(ssl_.get()) : nullptr;
    return input != nullptr && BIO_number_read(input) > 0;
}

}  // namespace qv_naming
