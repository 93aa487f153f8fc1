#include "standalone/zipkin_span.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace qv_standalone {
namespace {

constexpr Json::Int64 kMicroseconds = 1000;  // in a millisecond
constexpr char kDigits[] = "0123456789abcdef";

bool IsId(const std::string& id, std::size_t shortest, std::size_t longest) {
    return id.size() >= shortest && id.size() <= longest &&
           id.find_first_not_of(kDigits) == std::string::npos &&
           id.find_first_not_of('0') != std::string::npos;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// "app:process-node-slot" of "app:process-node-slot:/path/:operation".
std::string ServiceName(const std::string& spanName, const std::string& component) {
    const std::size_t first = spanName.find(':');
    const std::size_t second = first == std::string::npos ? first : spanName.find(':', first + 1);
    const std::string service = second == std::string::npos ? "" : spanName.substr(0, second);
    return Lower(service.find_first_not_of(":-") == std::string::npos ? component : service);
}

std::optional<int> Port(const std::string& text) {
    int port = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (failure != std::errc() || end != text.data() + text.size() || port < 1 || port > 65535) {
        return std::nullopt;
    }
    return port;
}

bool IsAddress(int family, const std::string& text) {
    unsigned char bytes[sizeof(in6_addr)];
    return inet_pton(family, text.c_str(), bytes) == 1;
}

Json::Value Endpoint(const char* kind, const std::string& address, const std::string& port) {
    Json::Value endpoint(Json::objectValue);
    endpoint[kind] = address;
    if (const std::optional<int> number = Port(port)) {
        endpoint["port"] = *number;
    }
    return endpoint;
}

/// Of "ip" and "port", which are an "address:port" divided at its first ":"; null when they name no address.
Json::Value RemoteEndpoint(const Json::Value& host) {
    const std::string ip = host["ip"].asString();
    const std::string port = host["port"].asString();
    if (IsAddress(AF_INET, ip)) {
        return Endpoint("ipv4", ip, port);
    }
    const std::string whole = ip + ':' + port;
    const std::size_t colon = whole.rfind(':');
    std::string address = whole.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
        address = address.substr(1, address.size() - 2);
    }
    if (IsAddress(AF_INET6, address)) {
        return Endpoint("ipv6", address, whole.substr(colon + 1));
    }
    return {};
}

void PutTimes(const Json::Value& annotations, Json::Value& zipkin) {
    Json::Int64 begin = 0;
    Json::Int64 end = 0;
    for (const Json::Value& annotation : annotations) {
        const std::string kind = annotation["value"].asString();
        (kind == "ss" ? end : begin) = annotation["timestamp"].asInt64();
    }
    zipkin["timestamp"] = begin * kMicroseconds;
    zipkin["duration"] = std::max<Json::Int64>(1, (end - begin) * kMicroseconds);
}

void PutTags(const Json::Value& entries, Json::Value& zipkin) {
    Json::Value& tags = zipkin["tags"] = Json::Value(Json::objectValue);
    for (const Json::Value& entry : entries) {
        tags[entry["key"].asString()] = entry["value"].asString();
    }
    const std::string result = tags.get("resultCode", "").asString();
    if (!result.empty() && result != "200") {
        tags["error"] = result;
    }
}

}  // namespace

Json::Value ZipkinSpan(const Json::Value& span, const std::string& component) {
    const std::string trace = Lower(span["traceId"].asString());
    const std::string id = Lower(span["id"].asString());
    const std::string parent = Lower(span["parentId"].asString());
    if (!IsId(trace, 16, 32) || !IsId(id, 16, 16)) {
        return {};
    }
    Json::Value zipkin;
    zipkin["traceId"] = trace;
    zipkin["id"] = id;
    if (IsId(parent, 16, 16)) {
        zipkin["parentId"] = parent;
    }
    const std::string name = span["name"].asString();
    zipkin["name"] = name;
    zipkin["kind"] = "SERVER";
    PutTimes(span["annotations"], zipkin);
    zipkin["localEndpoint"]["serviceName"] = ServiceName(name, component);
    const Json::Value& annotations = span["annotations"];
    if (!annotations.empty()) {
        if (Json::Value remote = RemoteEndpoint(annotations[0]["host"]); !remote.isNull()) {
            zipkin["remoteEndpoint"] = std::move(remote);
        }
    }
    PutTags(span["append"], zipkin);
    return zipkin;
}

}  // namespace qv_standalone
