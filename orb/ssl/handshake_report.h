// What failed in a handshake, told in a sentence that an operator can act on.
#pragma once

#include <openssl/ssl.h>

#include <string>

namespace qv_ssl {

/// How many handshakes that peers began may be under way in this process. Each has a thread; further peers
/// are turned away at once.
constexpr int kMostHandshakes = 1000;

/// What is done with a sentence. Called on the thread of the connection; must not throw.
using HandshakeSink = void (*)(const std::string& sentence);

/// Has every handshake that fails, is given up, or is refused by the peer afterwards reported once, with the
/// peer's address. A peer that connects and leaves without a byte, as a port check does, is not mentioned.
/// One sink per process, to be set before the first connection.
void SetHandshakeSink(HandshakeSink sink);

/// For SSL_CTX_set_info_callback. Keeps to the bound and ends connections that ask for renegotiation again
/// and again. Thread-safe.
void WatchHandshake(const SSL* connection, int where, int result);

}  // namespace qv_ssl
