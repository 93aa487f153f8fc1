#include "demo/agent/core/peer_address.h"

#include <arpa/inet.h>

#include <cstring>

namespace qv_demo {

std::string HostOf(const std::string& address) {
    const std::string host = address.substr(0, address.rfind(':'));
    const bool in_brackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return in_brackets ? host.substr(1, host.size() - 2) : host;
}

unsigned int IPv4Of(const std::string& address) {
    const std::string host = HostOf(address);
    in_addr v4{};
    if (::inet_pton(AF_INET, host.c_str(), &v4) == 1) {
        return ntohl(v4.s_addr);
    }
    in6_addr v6{};
    if (::inet_pton(AF_INET6, host.c_str(), &v6) == 1 && IN6_IS_ADDR_V4MAPPED(&v6)) {
        std::memcpy(&v4.s_addr, &v6.s6_addr[12], sizeof v4.s_addr);
        return ntohl(v4.s_addr);
    }
    return kNoIPv4;
}

}  // namespace qv_demo
