#include "tests/e2e/ssl/loopback_capture.h"

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/ip.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

namespace qv_e2e {
namespace {

constexpr int kRoom = 64 * 1024 * 1024;               // bytes that may wait to be looked at
constexpr std::size_t kLargestPacket = 256UL * 1024;  // the loopback passes segments on in lumps
constexpr int kPollMs = 50;

/// The head of each message: magic word and major version. With five octets, chance finds it in 1 MiB of
/// ciphertext once in a million runs.
const std::string kGiopHead{"GIOP\1", 5};

std::string Contents(const unsigned char* packet, std::size_t size, std::pair<int, int>& ports) {
    iphdr ip;
    tcphdr tcp;
    if (size < sizeof ip) {
        return "";
    }
    std::memcpy(&ip, packet, sizeof ip);
    const std::size_t tcp_at = ip.ihl * 4UL;
    if (ip.version != 4 || ip.protocol != IPPROTO_TCP || size < tcp_at + sizeof tcp) {
        return "";
    }
    std::memcpy(&tcp, packet + tcp_at, sizeof tcp);
    ports = {ntohs(tcp.source), ntohs(tcp.dest)};
    const std::size_t contents_at = tcp_at + tcp.doff * 4UL;
    const std::size_t end = std::min<std::size_t>(size, ntohs(ip.tot_len) == 0 ? size : ntohs(ip.tot_len));
    return contents_at >= end
               ? ""
               : std::string(reinterpret_cast<const char*>(packet) + contents_at, end - contents_at);
}

bool IsTlsRecord(const std::string& contents) {
    constexpr char kFirstType = 20;  // change of cipher, alert, handshake, data
    constexpr char kLastType = 23;
    return contents.size() > 2 && contents[0] >= kFirstType && contents[0] <= kLastType && contents[1] == 3;
}

}  // namespace

PortTraffic& PortTraffic::operator+=(const PortTraffic& other) {
    segments += other.segments;
    tls_records += other.tls_records;
    giop += other.giop;
    secrets += other.secrets;
    return *this;
}

bool LoopbackCapture::Allowed() {
    const int fd = ::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool allowed = fd >= 0;
    ::close(fd);
    return allowed;
}

LoopbackCapture::LoopbackCapture(std::string secret) : secret_(std::move(secret)) {
    fd_ = ::socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUFFORCE, &kRoom, sizeof kRoom);
    sockaddr_ll place{};
    place.sll_family = AF_PACKET;
    place.sll_protocol = htons(ETH_P_IP);
    place.sll_ifindex = static_cast<int>(::if_nametoindex("lo"));
    if (fd_ < 0 || ::bind(fd_, reinterpret_cast<sockaddr*>(&place), sizeof place) != 0) {
        const int reason = errno;
        ::close(fd_);
        throw std::system_error(reason, std::generic_category(), "capture on the loopback");
    }
    listener_ = std::thread([this] { Listen(); });
}

LoopbackCapture::~LoopbackCapture() {
    ended_ = true;
    listener_.join();
    ::close(fd_);
}

void LoopbackCapture::Listen() {
    std::vector<unsigned char> packet(kLargestPacket);
    pollfd readable{fd_, POLLIN, 0};
    while (!ended_) {
        if (::poll(&readable, 1, kPollMs) <= 0) {
            continue;
        }
        sockaddr_ll from{};
        socklen_t from_size = sizeof from;
        const ssize_t size = ::recvfrom(fd_, packet.data(), packet.size(), MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr*>(&from), &from_size);
        // Each packet passes the loopback twice, out and in.
        if (size > 0 && from.sll_pkttype != PACKET_OUTGOING) {
            Take(packet.data(), static_cast<std::size_t>(size));
        }
    }
}

void LoopbackCapture::Take(const unsigned char* packet, std::size_t size) {
    std::pair<int, int> ports;
    const std::string contents = Contents(packet, size, ports);
    if (!contents.empty()) {
        const PortTraffic judged = Judge(contents);
        const std::lock_guard<std::mutex> guard(mutex_);
        traffic_[ports] += judged;
    }
}

PortTraffic LoopbackCapture::Judge(const std::string& contents) const {
    PortTraffic judged;
    judged.segments = 1;
    judged.tls_records = IsTlsRecord(contents) ? 1 : 0;
    judged.giop = contents.find(kGiopHead) != std::string::npos ? 1 : 0;
    judged.secrets = contents.find(secret_) != std::string::npos ? 1 : 0;
    return judged;
}

PortTraffic LoopbackCapture::Seen(const std::set<int>& ports) const {
    PortTraffic all;
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const auto& [both, traffic] : traffic_) {
        if (ports.count(both.first) + ports.count(both.second) > 0) {
            all += traffic;
        }
    }
    return all;
}

unsigned LoopbackCapture::Missed() const {
    tpacket_stats statistics{};
    socklen_t size = sizeof statistics;
    ::getsockopt(fd_, SOL_PACKET, PACKET_STATISTICS, &statistics, &size);
    return statistics.tp_drops;
}

}  // namespace qv_e2e
