// Asks a name server over the wire whether it serves its root context.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qv_naming {

/// Sends a GIOP LocateRequest for the key "NameService" to a numeric address (IPv6 in brackets, empty for the
/// loopback address) and returns true when the server answers that the object is there. Any failure, and an
/// answer later than the time limit, is false.
bool RootContextAnswers(const std::string& address, std::uint16_t port, std::chrono::milliseconds limit);

}  // namespace qv_naming
