// Peers that cost a server by SSL work and get nothing from it.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "orb/ssl/openssl_types.h"

namespace bench {

enum class TroubleKind {
    kHalfOpen,       ///< 200 connections that never get through the handshake, made anew when they are closed
    kClearToSsl,     ///< requests in clear at the SSL port
    kSslToClear,     ///< handshakes at the plain port
    kRenegotiation,  ///< good clients that ask for one handshake after the other
    kRandomBytes,    ///< at the SSL port, half of them with the head of a handshake
    kNoCertificate,  ///< handshakes by clients that show none
};

/// The kind of that name, as "half-open"; throws std::invalid_argument.
TroubleKind TroubleKindOf(const std::string& name);
/// The names of all kinds.
std::vector<std::string> TroubleKinds();

struct TroubleTarget {
    std::string address;
    int plain_port = 0;
    int ssl_port = 0;
    std::string profile;  ///< service configuration file of a client that the server trusts
};

/// Makes one trouble after the other.
class Troublemaker {
  public:
    /// Throws qv_ssl::SslError.
    Troublemaker(TroubleKind kind, TroubleTarget target);

    /// Makes it once and waits until the server has done with it. Not for kHalfOpen. Thread-safe. False when
    /// the server took for good what it should not, or couldn't be reached.
    bool Once(unsigned round) const;

  private:
    bool Renegotiate() const;
    bool Send(const std::string& bytes) const;

    const TroubleKind kind_;
    const TroubleTarget target_;
    qv_ssl::ContextPtr context_;
};

/// Makes trouble on threads of its own until it goes, so many times a second; 200 half-open connections stand
/// all the time.
class Trouble {
  public:
    Trouble(TroubleKind kind, const TroubleTarget& target, unsigned per_second);
    ~Trouble();
    Trouble(const Trouble&) = delete;
    Trouble& operator=(const Trouble&) = delete;

    /// How often it was made, and how often it didn't go as it should.
    unsigned long Made() const { return made_; }
    unsigned long Failed() const { return failed_; }

  private:
    void HoldHalfOpen(const TroubleTarget& target);
    void Repeat(const Troublemaker& maker, unsigned thread, unsigned per_second);

    std::atomic<bool> ended_{false};
    std::atomic<unsigned long> made_{0};
    std::atomic<unsigned long> failed_{0};
    std::vector<std::thread> threads_;
};

}  // namespace bench
