#include "tools/qv_audit_caller.h"

#include <optional>

namespace qv_tools {
namespace {

std::optional<std::string> Between(const std::string& text, const std::string& open,
                                   const std::string& close) {
    const std::size_t begin = text.find(open);
    if (begin == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t end = text.find(close, begin + open.size());
    if (end == std::string::npos) {
        return std::nullopt;
    }
    return text.substr(begin + open.size(), end - begin - open.size());
}

std::string HostAndPort(const Caller& caller) {
    return caller.port.empty() ? caller.host : caller.host + ":" + caller.port;
}

}  // namespace

Caller ParseCaller(const std::string& address) {
    Caller caller;
    caller.user = Between(address, "<USERNAME_TAG>", "</USERNAME_TAG>").value_or("");
    caller.host = Between(address, "<IPANDPORT_TAG>", "</IPANDPORT_TAG>").value_or(address);
    const std::size_t colon = caller.host.rfind(':');
    if (colon != std::string::npos) {
        caller.port = caller.host.substr(colon + 1);
        caller.host.erase(colon);
    }
    return caller;
}

std::string CallerText(const Caller& caller) {
    return caller.user.empty() ? HostAndPort(caller) : caller.user + "@" + HostAndPort(caller);
}

bool CallerMatches(const std::string& address, const std::string& wanted) {
    const Caller caller = ParseCaller(address);
    return wanted == caller.host || wanted == HostAndPort(caller) || wanted == CallerText(caller) ||
           wanted == address;
}

}  // namespace qv_tools
