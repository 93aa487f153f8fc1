#include "standalone/host_ip.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

namespace qv_standalone {
namespace {

std::string TextOf(int family, const void* address) {
    char text[INET6_ADDRSTRLEN] = "";
    return inet_ntop(family, address, text, sizeof(text)) == nullptr ? "" : text;
}

std::string IPv4(const sockaddr* address) {
    sockaddr_in in{};
    std::memcpy(&in, address, sizeof(in));
    return TextOf(AF_INET, &in.sin_addr);
}

std::string GlobalIPv6(const sockaddr* address) {
    sockaddr_in6 in{};
    std::memcpy(&in, address, sizeof(in));
    return IN6_IS_ADDR_LINKLOCAL(&in.sin6_addr) ? "" : TextOf(AF_INET6, &in.sin6_addr);
}

}  // namespace

std::string FirstHostIP() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return "";
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(list, &freeifaddrs);
    std::string ipv6;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        const bool wanted = (entry->ifa_flags & IFF_UP) != 0 && (entry->ifa_flags & IFF_LOOPBACK) == 0;
        if (!wanted || entry->ifa_addr == nullptr) {
            continue;
        }
        if (entry->ifa_addr->sa_family == AF_INET) {
            return IPv4(entry->ifa_addr);
        }
        if (entry->ifa_addr->sa_family == AF_INET6 && ipv6.empty()) {
            ipv6 = GlobalIPv6(entry->ifa_addr);
        }
    }
    return ipv6.empty() ? "127.0.0.1" : ipv6;
}

}  // namespace qv_standalone
