// Peers that never answer.
#pragma once

#include <string>
#include <vector>

namespace qv_test {

/// A listening socket of 127.0.0.1 that nobody reads from. Connections are taken by the system, or, once
/// Fill() was called, not even that.
class SilentPeer {
  public:
    SilentPeer();
    ~SilentPeer();
    SilentPeer(const SilentPeer&) = delete;
    SilentPeer& operator=(const SilentPeer&) = delete;

    /// Fills the queue of connections, so that a further one hangs while it is made. Throws
    /// std::runtime_error when the system takes all it is given.
    void Fill();

    /// A reference to an object of this peer.
    std::string Reference() const;

  private:
    int Connect() const;

    int m_listener = -1;
    int m_port = 0;
    std::vector<int> m_connections;
};

}  // namespace qv_test
