// Which addresses of this machine a service listens on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qv_service {

/// Addresses in the spelling of an ORB endpoint: numeric, IPv6 in brackets, empty for every interface.
using AddressList = std::vector<std::string>;

/// The addresses to listen on for an endpoint's host: those that the host stands for, and this machine's
/// loopback addresses as far as the port is free there, so that a local client gets through by either name.
/// Throws StartError when the host is unknown or not this machine, or when the port is in use or not allowed.
AddressList ListenAddresses(const std::string& host, std::uint16_t port);

}  // namespace qv_service
