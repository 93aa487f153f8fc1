// The network device by which a host reaches the switch.
#pragma once

#include <sys/types.h>

#include <string>

namespace qv_faults {

/// A TUN device in the network namespace of a process: what the host sends there can be read, what is written
/// arrives at the host. The device goes with this object. Raises std::system_error, with the step that
/// failed.
class Tunnel {
  public:
    /// The calling thread visits the namespace and comes back. The device is down and has no address yet.
    Tunnel(pid_t process, const std::string& device);
    ~Tunnel();
    Tunnel(const Tunnel&) = delete;
    Tunnel& operator=(const Tunnel&) = delete;

    int fd() const { return fd_; }

    /// The next packet; empty when none waits. Does not block.
    std::string Read() const;

    /// A host that can't take it loses it, as on a real network.
    void Write(const std::string& packet) const;

  private:
    int fd_ = -1;
};

/// The IPv4 address that a packet goes to, as "10.0.0.1"; empty for anything else.
std::string DestinationOf(const std::string& packet);

}  // namespace qv_faults
