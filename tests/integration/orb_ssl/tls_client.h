// A client that does by hand in a handshake what an ORB would not.
#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

#include "tests/support/certificates/test_authority.h"

namespace qv_test {

struct TlsClientOptions {
    const IssuedFiles* identity = nullptr;  ///< null: shows no certificate
    int highest_version = 0;                ///< as TLS1_1_VERSION; 0: the newest
};

/// One connection to 127.0.0.1 that trusts any server. Throws std::runtime_error when it can't be made.
class TlsClient {
  public:
    explicit TlsClient(int port, const TlsClientOptions& options = {});
    ~TlsClient();
    TlsClient(const TlsClient&) = delete;
    TlsClient& operator=(const TlsClient&) = delete;

    /// Goes through the handshake, and with TLS 1.3 to the point where the server has looked at the
    /// certificate: a byte is sent and the peer's answer waited for. False when the server refuses.
    bool Connect();
    /// Asks for another handshake on the same connection, as TLS 1.2 allows. False when it fails.
    bool Renegotiate();
    /// The common name in the server's certificate; empty without a handshake.
    std::string ServerName() const;

    SSL* ssl() { return m_ssl; }

  private:
    SSL_CTX* m_context = nullptr;
    SSL* m_ssl = nullptr;
    int m_fd = -1;
};

/// A TCP connection to 127.0.0.1, to be closed by the caller. Throws std::system_error.
int ConnectTo(int port);

}  // namespace qv_test
