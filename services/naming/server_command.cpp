#include "services/naming/server_command.h"

#include <cstdlib>

#include "orb/ssl/tls_setup.h"

namespace qv_naming {
namespace {

std::string EndPoint(const char* transport, const std::string& host, const std::string& port) {
    return transport + host + ":" + port;
}

}  // namespace

std::vector<std::string> ServerCommand(const Settings& settings, const qv_ssl::SslSettings* ssl,
                                       const std::filesystem::path& data, const AddressList& addresses) {
    const std::string port = std::to_string(settings.port);
    const std::string ssl_port = std::to_string(settings.ssl_port);
    std::vector<std::string> command{"-start",      port,          "-always",        "-datadir",
                                     data.string(), "-nohostname", "-ORBtraceLevel", "1"};
    const auto add = [&command](const char* option, const std::string& value) {
        command.insert(command.end(), {option, value});
    };
    for (const std::string& address : addresses) {
        add("-ORBendPoint", EndPoint("giop:tcp:", address, port));
    }
    std::string published = EndPoint("giop:tcp:", settings.host, port);
    if (ssl != nullptr) {
        for (const std::string& address : addresses) {
            add("-ORBendPoint", EndPoint("giop:ssl:", address, ssl_port));
        }
        published += "," + EndPoint("giop:ssl:", settings.host, ssl_port);
        add("-ORBclientTransportRule", ssl->no_protection ? "* unix,ssl,tcp" : "* unix,ssl");
        add("-ORBsslAcceptTimeOut", std::to_string(qv_ssl::kHandshakePatience.count()));
    }
    if (!addresses.front().empty()) {
        add("-ORBendPointPublish", published);
    }
    return command;
}

std::vector<std::string> SslVariables(const Settings& settings, const std::string& library) {
    const char* const others = std::getenv("LD_PRELOAD");
    return {"QV_NAMING_SSL_PROFILE=" + settings.ssl_profile,
            "LD_PRELOAD=" + library + (others != nullptr ? std::string(":") + others : "")};
}

std::string WhereItServes(const Settings& settings, const qv_ssl::SslSettings* ssl) {
    const std::string host = settings.host.empty() ? "*" : settings.host;
    const auto at = [&](const char* protocol, unsigned port) {
        return std::string("corbaloc:") + protocol + ":" + host + ":" + std::to_string(port) + "/NameService";
    };
    if (ssl == nullptr) {
        return at("iiop", settings.port);
    }
    return at("ssliop", settings.ssl_port) + (ssl->no_protection ? " and " + at("iiop", settings.port) : "");
}

}  // namespace qv_naming
