#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace qv_e2e {

/// What went over the connections of one port, in both directions.
struct PortTraffic {
    std::size_t segments = 0;     ///< with contents
    std::size_t tls_records = 0;  ///< segments that begin with a record of TLS
    std::size_t giop = 0;         ///< segments that hold the beginning of a GIOP message, anywhere
    std::size_t secrets = 0;      ///< segments that hold the secret

    PortTraffic& operator+=(const PortTraffic& other);
};

/// Listens to all TCP over IPv4 on the loopback, with a packet socket, which takes the right CAP_NET_RAW. A
/// segment counts for both of its ports. Its functions are for one thread; it has a thread of its own beside.
class LoopbackCapture {
  public:
    /// Whether this process may capture.
    static bool Allowed();

    /// `secret` is a text that should not be seen.
    explicit LoopbackCapture(std::string secret);
    ~LoopbackCapture();
    LoopbackCapture(const LoopbackCapture&) = delete;
    LoopbackCapture& operator=(const LoopbackCapture&) = delete;

    /// What was seen so far of these ports, all in one.
    PortTraffic Seen(const std::set<int>& ports) const;
    /// How many packets passed unseen for want of room, of all ports; to be asked once.
    unsigned Missed() const;

  private:
    void Listen();
    void Take(const unsigned char* packet, std::size_t size);
    PortTraffic Judge(const std::string& contents) const;

    const std::string secret_;
    int fd_ = -1;
    std::atomic<bool> ended_{false};
    mutable std::mutex mutex_;
    std::map<std::pair<int, int>, PortTraffic> traffic_;  // by both ports; guarded by mutex_
    std::thread listener_;
};

}  // namespace qv_e2e
