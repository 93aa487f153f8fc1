#pragma once

#include <string>

namespace qv_e2e {

/// An IPv4 address of this host that is none of the loopback's; empty when there is none.
std::string HostAddress();

}  // namespace qv_e2e
