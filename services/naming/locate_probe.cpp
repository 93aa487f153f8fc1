#include "services/naming/locate_probe.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace qv_naming {
namespace {

constexpr unsigned char kLocateReply = 4;
constexpr unsigned char kObjectHere = 1;
constexpr std::size_t kReplySize = 20;  // header, request id, locate status

// GIOP 1.0, big-endian: header with message type 3 and size 19, request id 1, key length 11, key.
constexpr char kLocateRequest[] =
    "GIOP\x01\x00\x00\x03"
    "\x00\x00\x00\x13"
    "\x00\x00\x00\x01"
    "\x00\x00\x00\x0b"
    "NameService";

class Connection {
  public:
    Connection(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit)
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
        connecting_ =
            fd_ >= 0 && (connect(fd_, info->ai_addr, info->ai_addrlen) == 0 || errno == EINPROGRESS);
        freeaddrinfo(info);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }

    bool Send(const char* data, std::size_t size) const {
        // A request of 31 bytes fits into the empty send buffer of a new connection in one piece.
        return connecting_ && WaitFor(POLLOUT) &&
               send(fd_, data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }

    bool Receive(unsigned char* data, std::size_t size) const {
        std::size_t have = 0;
        while (have < size && WaitFor(POLLIN)) {
            const ssize_t got = recv(fd_, data + have, size - have, 0);
            if (got <= 0) {
                return false;
            }
            have += static_cast<std::size_t>(got);
        }
        return have == size;
    }

  private:
    bool WaitFor(short events) const {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline_ - std::chrono::steady_clock::now());
        pollfd entry{fd_, events, 0};
        return left.count() > 0 && poll(&entry, 1, static_cast<int>(left.count())) == 1;
    }

    std::chrono::steady_clock::time_point deadline_;
    int fd_ = -1;
    bool connecting_ = false;
};

}  // namespace

bool RootContextAnswers(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit) {
    const Connection connection(address, port, limit);
    std::array<unsigned char, kReplySize> reply{};
    if (!connection.Send(kLocateRequest, sizeof kLocateRequest - 1) ||
        !connection.Receive(reply.data(), reply.size())) {
        return false;
    }
    const bool little_endian = (reply[6] & 1) != 0;
    const unsigned char status = little_endian ? reply[16] : reply[19];
    return std::memcmp(reply.data(), "GIOP", 4) == 0 && reply[7] == kLocateReply && status == kObjectHere;
}

}  // namespace qv_naming
