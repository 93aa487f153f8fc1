#include "bench/ssl/connection.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "orb/ssl/credential_source.h"
#include "orb/ssl/service_config_file.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"

namespace bench {
namespace {

constexpr timeval kPatience{5, 0};

// A LocateRequest of GIOP 1.0, big-endian, with id 1 and the key "none".
constexpr char kLocateRequest[] =
    "GIOP\1\0\0\3"
    "\0\0\0\x0c"
    "\0\0\0\1"
    "\0\0\0\4none";
constexpr std::size_t kRequestSize = sizeof kLocateRequest - 1;

int ConnectTo(const std::string& host, int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = ::inet_addr(host.c_str());
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

qv_ssl::ContextPtr ClientContext(const std::string& profile) {
    const auto settings = qv_ssl::ReadServiceConfigFile(profile).ssl;
    if (!settings) {
        throw qv_ssl::SslError(profile + " has no SSL options");
    }
    qv_ssl::ContextPtr context(SSL_CTX_new(TLS_client_method()));
    qv_ssl::SetUpContext(context.get(), *settings,
                         std::make_shared<qv_ssl::CredentialSource>(
                             *settings, &std::chrono::steady_clock::now, [](const std::string&) {}));
    return context;
}

Connection::Connection(const std::string& address, int port, SSL_CTX* context)
    : fd_(ConnectTo(address, port)) {
    if (context != nullptr && Open()) {
        ssl_ = SSL_new(context);
        SSL_set_fd(ssl_, fd_);
    }
}

Connection::~Connection() {
    SSL_free(ssl_);
    if (Open()) {
        ::close(fd_);
    }
    ERR_clear_error();
}

bool Connection::Shake() {
    return Open() && (ssl_ == nullptr || SSL_connect(ssl_) == 1);
}

bool Connection::Ask() {
    char answer[4] = "";
    const bool answered =
        ssl_ == nullptr
            ? SendRaw(std::string(kLocateRequest, kRequestSize)) &&
                  ::recv(fd_, answer, sizeof answer, MSG_WAITALL) == static_cast<ssize_t>(sizeof answer)
            : SSL_write(ssl_, kLocateRequest, kRequestSize) > 0 &&
                  SSL_read(ssl_, answer, sizeof answer) == static_cast<int>(sizeof answer);
    return answered && std::memcmp(answer, "GIOP", sizeof answer) == 0;
}

bool Connection::Renegotiate() {
    return SSL_renegotiate(ssl_) == 1 && SSL_do_handshake(ssl_) == 1;
}

bool Connection::SendRaw(const std::string& bytes) const {
    return ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool Connection::Closed() const {
    char byte;
    const ssize_t got = ::recv(fd_, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return got == 0 || (got < 0 && errno != EAGAIN);
}

void Connection::WaitUntilClosed() const {
    ::shutdown(fd_, SHUT_WR);
    char rest[256];
    while (::recv(fd_, rest, sizeof rest, 0) > 0) {
    }
}

}  // namespace bench
