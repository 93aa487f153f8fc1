#include "services/common/ssl_profile.h"

#include <chrono>
#include <memory>

#include "orb/ssl/credential_source.h"
#include "orb/ssl/service_config_file.h"
#include "orb/ssl/ssl_error.h"
#include "orb/ssl/tls_setup.h"
#include "services/common/start_error.h"

namespace qv_service {

SslProfile LoadSslProfile(const std::string& file) {
    SslProfile profile;
    try {
        qv_ssl::ServiceConfig config = qv_ssl::ReadServiceConfigFile(file);
        if (!config.ssl) {
            throw qv_ssl::SslError("the service configuration file " + file +
                                   " has no SSLIOP_Factory directive");
        }
        profile.settings = *config.ssl;
        profile.remarks = config.remarks;
        qv_ssl::RequireComplete(profile.settings, true);
        const auto source = std::make_shared<qv_ssl::CredentialSource>(
            profile.settings, &std::chrono::steady_clock::now, [](const std::string&) {});
        profile.client.reset(SSL_CTX_new(TLS_method()));
        qv_ssl::SetUpContext(profile.client.get(), profile.settings, source);
        SSL_CTX_set_verify(profile.client.get(), SSL_VERIFY_NONE, nullptr);
        return profile;
    } catch (const qv_ssl::SslError& problem) {
        throw StartError(std::string("SSL can't be set up: ") + problem.what() +
                         ". Correct it; \"qv_ssl check\" looks at all of the set-up.");
    }
}

}  // namespace qv_service
