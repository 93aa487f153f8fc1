#pragma once

#include <string>

namespace qv_demo {

/// The host of "host:port", an IPv6 address without its brackets.
std::string HostOf(const std::string& address);

/// The IPv4 address of "host:port" as a number in host byte order, 0x7F000001 for 127.0.0.1; also of one that
/// is written as an IPv6 address. Anything else gives kNoIPv4, which no access list holds.
unsigned int IPv4Of(const std::string& address);

/// Not 0: a host name that can't be resolved stands in an access list as 0.
inline constexpr unsigned int kNoIPv4 = 0xFFFFFFFF;

}  // namespace qv_demo
