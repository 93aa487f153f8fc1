// A client's connection by hand, which does what an ORB's would not.
#pragma once

#include <openssl/ssl.h>

#include <string>

#include "orb/ssl/openssl_types.h"

namespace bench {

/// A context for clients that shows the certificate of the service configuration file. Throws
/// qv_ssl::SslError.
qv_ssl::ContextPtr ClientContext(const std::string& profile);

/// One connection to an IPv4 address, in clear when there is no context. Nothing throws: what fails returns
/// false, and so does what takes more than five seconds.
class Connection {
  public:
    Connection(const std::string& address, int port, SSL_CTX* context);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Whether the port took the connection.
    bool Open() const { return fd_ >= 0; }
    /// Goes through the handshake; nothing to do in clear.
    bool Shake();
    /// Asks where an object is that isn't there, and waits for the beginning of the answer.
    bool Ask();
    /// Asks for another handshake, as TLS 1.2 allows.
    bool Renegotiate();
    /// Sends these bytes ahead of any handshake.
    bool SendRaw(const std::string& bytes) const;
    /// Whether the server has closed the connection.
    bool Closed() const;
    /// Waits until the server has closed the connection.
    void WaitUntilClosed() const;

  private:
    int fd_ = -1;
    SSL* ssl_ = nullptr;
};

}  // namespace bench
