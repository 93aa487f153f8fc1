#pragma once

#include <string>

namespace qv_standalone {

/// The first IPv4 address of an interface that is up and isn't the loopback, otherwise the first IPv6 address
/// that is valid beyond its link, otherwise "127.0.0.1"; empty when the system doesn't tell its interfaces.
/// Reentrant.
std::string FirstHostIP();

}  // namespace qv_standalone
