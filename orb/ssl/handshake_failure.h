// The words for a failed handshake.
#pragma once

#include <openssl/ssl.h>

#include <string>

namespace qv_ssl {

/// The peer's side of what OpenSSL noted last on this thread (`error`, 0 for nothing) about a handshake: what
/// the peer did and what to do, to go behind "the peer HOST:PORT ".
std::string DescribeFailure(unsigned long error, long verify_result);

/// The same for an alert that a peer sent: why it does not want this process.
std::string DescribeAlert(int alert);

}  // namespace qv_ssl
