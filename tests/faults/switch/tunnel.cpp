#include "tests/faults/switch/tunnel.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <netinet/ip.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace qv_faults {
namespace {

constexpr std::size_t kLongestPacket = 65536;

int Checked(int result, const std::string& step) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), step);
    }
    return result;
}

/// Brings the calling thread into the network namespace of a process for as long as it lives.
class Visit {
  public:
    explicit Visit(pid_t process)
        : home_(Checked(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC), "own namespace")) {
        const std::string path = "/proc/" + std::to_string(process) + "/ns/net";
        const int there = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        const int entered = there < 0 ? -1 : ::setns(there, CLONE_NEWNET);
        const int reason = errno;
        ::close(there);
        if (entered < 0) {
            ::close(home_);
            throw std::system_error(reason, std::generic_category(), "entering " + path);
        }
    }
    ~Visit() {
        ::setns(home_, CLONE_NEWNET);
        ::close(home_);
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

  private:
    const int home_;
};

}  // namespace

Tunnel::Tunnel(pid_t process, const std::string& device) {
    const Visit visit(process);
    fd_ = Checked(::open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC), "opening /dev/net/tun");
    ifreq request{};
    request.ifr_flags = IFF_TUN | IFF_NO_PI;
    std::strncpy(request.ifr_name, device.c_str(), IFNAMSIZ - 1);
    if (::ioctl(fd_, TUNSETIFF, &request) < 0) {
        const int reason = errno;
        ::close(fd_);
        throw std::system_error(reason, std::generic_category(), "making the device " + device);
    }
}

Tunnel::~Tunnel() {
    ::close(fd_);
}

std::string Tunnel::Read() const {
    std::array<char, kLongestPacket> buffer;
    const ssize_t size = ::read(fd_, buffer.data(), buffer.size());
    return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : "";
}

void Tunnel::Write(const std::string& packet) const {
    [[maybe_unused]] const ssize_t written = ::write(fd_, packet.data(), packet.size());
}

std::string DestinationOf(const std::string& packet) {
    iphdr header{};
    if (packet.size() < sizeof header) {
        return "";
    }
    std::memcpy(&header, packet.data(), sizeof header);
    std::array<char, INET_ADDRSTRLEN> text{};
    const bool is_ipv4 = header.version == 4;
    return is_ipv4 && ::inet_ntop(AF_INET, &header.daddr, text.data(), text.size()) != nullptr ? text.data()
                                                                                               : "";
}

}  // namespace qv_faults
