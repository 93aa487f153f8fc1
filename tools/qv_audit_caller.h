#pragma once

#include <string>

namespace qv_tools {

/// Who called, out of the address that the agent wrote.
struct Caller {
    std::string user;
    std::string host;  ///< without the port
    std::string port;
};

/// Reads the tags of an address; one without tags is a host, with a port after the last colon.
Caller ParseCaller(const std::string& address);

/// "user@host:port", less what isn't known.
std::string CallerText(const Caller& caller);

/// True when `wanted` is the host, host:port or user@host:port of `address`, or the whole of it.
bool CallerMatches(const std::string& address, const std::string& wanted);

}  // namespace qv_tools
