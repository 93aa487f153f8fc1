#include "services/common/listen_addresses.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "services/common/start_error.h"

namespace qv_service {
namespace {

using AddressInfo = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressInfo Resolve(const std::string& host, int family, int flags, int& error) {
    addrinfo hints{};
    hints.ai_family = family;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    error = getaddrinfo(host.empty() ? nullptr : host.c_str(), "0", &hints, &found);
    return {error == 0 ? found : nullptr, &freeaddrinfo};
}

std::string NumericAddress(const addrinfo& info) {
    char text[NI_MAXHOST] = "";
    getnameinfo(info.ai_addr, info.ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
    return info.ai_family == AF_INET6 ? "[" + std::string(text) + "]" : text;
}

std::string WithoutBrackets(const std::string& host) {
    return host.size() > 2 && host.front() == '[' && host.back() == ']' ? host.substr(1, host.size() - 2)
                                                                        : host;
}

// IPv4 first, as clients of either ORB resolve a name; IPv6 where there is nothing else.
AddressList AddressesOf(const std::string& host, int& error) {
    AddressInfo found = Resolve(WithoutBrackets(host), AF_INET, 0, error);
    if (!found) {
        found = Resolve(WithoutBrackets(host), AF_INET6, 0, error);
    }
    AddressList addresses;
    for (const addrinfo* info = found.get(); info != nullptr; info = info->ai_next) {
        const std::string address = NumericAddress(*info);
        if (std::find(addresses.begin(), addresses.end(), address) == addresses.end()) {
            addresses.push_back(address);
        }
    }
    return addresses;
}

// 0 when a server will be able to listen there, otherwise the errno that stands in its way.
int TryToListen(const std::string& address, std::uint16_t port) {
    int error = 0;
    const AddressInfo info = Resolve(WithoutBrackets(address), AF_UNSPEC, AI_NUMERICHOST | AI_PASSIVE, error);
    if (!info) {
        return EADDRNOTAVAIL;
    }
    if (info->ai_family == AF_INET) {
        reinterpret_cast<sockaddr_in*>(info->ai_addr)->sin_port = htons(port);
    } else {
        reinterpret_cast<sockaddr_in6*>(info->ai_addr)->sin6_port = htons(port);
    }
    const int fd = socket(info->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return errno;
    }
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool bound = bind(fd, info->ai_addr, info->ai_addrlen) == 0 && listen(fd, 1) == 0;
    const int result = bound ? 0 : errno;
    close(fd);
    return result;
}

[[noreturn]] void RefuseAddress(const std::string& host, const std::string& address, std::uint16_t port,
                                int reason) {
    const std::string where = address + ":" + std::to_string(port);
    switch (reason) {
        case EADDRINUSE:
            throw StartError(
                "The port " + where +
                " is in use by another process, so no client could reach this service. End "
                "that process (\"ss -ltnp\" names it) or choose another port.");
        case EADDRNOTAVAIL:
            throw StartError(
                "The host \"" + host + "\" stands for " + address +
                ", which is not an address of this machine. Correct the host in the configuration or "
                "the entry in /etc/hosts.");
        case EACCES:
        case EPERM:
            throw StartError(
                "This user may not listen on " + where +
                ". Choose a port of 1024 or above, or start the service with more rights.");
        default:
            throw StartError("Listening on " + where + " failed: " + std::strerror(reason) +
                             ". Check the network settings of this machine.");
    }
}

std::string NodeName() {
    char name[256] = "";
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

void AddLoopback(AddressList& addresses, std::uint16_t port) {
    int error = 0;
    AddressList candidates = AddressesOf(NodeName(), error);
    candidates.push_back("127.0.0.1");
    for (const std::string& candidate : candidates) {
        const bool loopback = candidate.rfind("127.", 0) == 0;
        const bool listed = std::find(addresses.begin(), addresses.end(), candidate) != addresses.end();
        if (loopback && !listed && TryToListen(candidate, port) == 0) {
            addresses.push_back(candidate);
        }
    }
}

}  // namespace

AddressList ListenAddresses(const std::string& host, std::uint16_t port) {
    if (host.empty() || host == "0.0.0.0" || host == "[::]") {
        if (const int reason = TryToListen("0.0.0.0", port); reason != 0) {
            RefuseAddress(host, "0.0.0.0", port, reason);
        }
        return {""};
    }
    int error = 0;
    AddressList addresses = AddressesOf(host, error);
    if (addresses.empty()) {
        throw StartError("The host \"" + host + "\" is not known to this machine (" + gai_strerror(error) +
                         "). Correct the host in the configuration or add it to /etc/hosts.");
    }
    for (const std::string& address : addresses) {
        if (const int reason = TryToListen(address, port); reason != 0) {
            RefuseAddress(host, address, port, reason);
        }
    }
    AddLoopback(addresses, port);
    return addresses;
}

}  // namespace qv_service
