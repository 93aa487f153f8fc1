// A connection to the name server that never waits longer than it may.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "orb/ssl/openssl_types.h"

namespace qv_naming {

/// One connection to a numeric address (IPv6 in brackets, empty for the loopback address), in clear or, with
/// a context, by SSL. Each operation waits no longer than until the time limit of the whole connection. For
/// one thread.
class ProbeConnection {
  public:
    ProbeConnection(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit,
                    SSL_CTX* context);
    ProbeConnection(const ProbeConnection&) = delete;
    ProbeConnection& operator=(const ProbeConnection&) = delete;
    ~ProbeConnection();

    /// All of it, or false. At most what fits into an empty send buffer.
    bool Send(const char* data, std::size_t size);
    bool Receive(unsigned char* data, std::size_t size);

    /// Whether the peer answered by SSL at all, be it to refuse this side's certificate.
    bool HeardSsl() const;

  private:
    template <class Step>
    bool Repeat(Step step);
    bool WaitFor(short events) const;

    const std::chrono::steady_clock::time_point deadline_;
    int fd_ = -1;
    bool connecting_ = false;
    qv_ssl::ConnectionPtr ssl_;
};

}  // namespace qv_naming
