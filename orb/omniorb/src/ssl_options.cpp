#include "ssl_options.h"

#include <omniORB4/CORBA.h>
#include <unistd.h>

#include <optional>

#include "diagnostics.h"
#include "orb/ssl/service_config_file.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"
#include "ssl_transport.h"

namespace qv_orb {
namespace {

constexpr char kEndpoint[] = "endPoint";
constexpr char kPlainScheme[] = "giop:tcp:";

std::optional<qv_ssl::SslSettings> ReadSettings(const OrbOptions& options) {
    const std::string& file = options.service_config;
    if (!options.wants_ssl && (file.empty() || access(file.c_str(), R_OK) != 0)) {
        return std::nullopt;
    }
    if (file.empty()) {
        throw qv_ssl::SslError(
            "an end point asks for an SSL port, but no -ORBSvcConf names a file with the SSL options");
    }
    qv_ssl::ServiceConfig config = qv_ssl::ReadServiceConfigFile(file);
    for (const std::string& remark : config.remarks) {
        ReportOnce(remark);
    }
    if (options.wants_ssl && !config.ssl) {
        throw qv_ssl::SslError("an end point asks for an SSL port, but the service configuration file " +
                               file + " has no SSLIOP_Factory directive");
    }
    return config.ssl;
}

// Each address gets an SSL port: nothing can be asked of the plain one where protection is required.
void AddSslEndpoints(OrbOptions& options) {
    auto& underlying = options.underlying;
    std::vector<std::string> plain;
    for (const auto& [name, value] : underlying) {
        if (name == kEndpoint && value.rfind(kPlainScheme, 0) == 0) {
            plain.push_back(value.substr(sizeof kPlainScheme - 1));
        }
    }
    if (plain.empty()) {
        underlying.emplace_back(kEndpoint, std::string(kPlainScheme) + ":");
        plain.emplace_back(":");
    }
    for (const std::string& address : plain) {
        underlying.emplace_back(kEndpoint, "giop:ssl:" + address.substr(0, address.rfind(':')) + ":0");
    }
}

void Apply(OrbOptions& options) {
    const std::optional<qv_ssl::SslSettings> settings = ReadSettings(options);
    if (!settings) {
        PrepareWithoutSsl();
        return;
    }
    PrepareSsl(*settings, options.wants_ssl);
    if (!options.wants_ssl && !settings->certificate_file.empty()) {
        AddSslEndpoints(options);
    }
    options.underlying.emplace_back("clientTransportRule", OutgoingTransports(*settings));
    options.underlying.emplace_back("sslAcceptTimeOut", std::to_string(qv_ssl::kHandshakePatience.count()));
}

}  // namespace

void ApplySslOptions(OrbOptions& options) {
    try {
        Apply(options);
    } catch (const qv_ssl::SslError& problem) {
        PrepareWithoutSsl();
        Report(std::string("SSL can't be set up: ") + problem.what());
        throw CORBA::INITIALIZE(0, CORBA::COMPLETED_NO);
    }
}

}  // namespace qv_orb
