// Asks a name server over the wire whether it serves its root context.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace qv_naming {

/// Sends a GIOP LocateRequest for the key "NameService" to a numeric address (IPv6 in brackets, empty for the
/// loopback address) and returns true when the server answers that the object is there. Any failure, and an
/// answer later than the time limit, is false. With a context it is asked by SSL; a server that answers by
/// SSL but does not accept this side's certificate is taken to serve as well, for it can say no more.
bool RootContextAnswers(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit,
                        SSL_CTX* context = nullptr);

}  // namespace qv_naming
