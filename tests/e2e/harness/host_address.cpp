#include "tests/e2e/harness/host_address.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <memory>

namespace qv_e2e {

std::string HostAddress() {
    ifaddrs* interfaces = nullptr;
    if (::getifaddrs(&interfaces) != 0) {
        return "";
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> guard(interfaces, ::freeifaddrs);
    for (const ifaddrs* one = interfaces; one != nullptr; one = one->ifa_next) {
        const bool wanted = one->ifa_addr != nullptr && one->ifa_addr->sa_family == AF_INET &&
                            (one->ifa_flags & IFF_UP) != 0 && (one->ifa_flags & IFF_LOOPBACK) == 0;
        if (wanted) {
            char text[INET_ADDRSTRLEN] = {};
            const auto* const address = reinterpret_cast<const sockaddr_in*>(one->ifa_addr);
            return ::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text);
        }
    }
    return "";
}

}  // namespace qv_e2e
