// The service configuration file of a service that serves by SSL, checked before the start.
#pragma once

#include <string>
#include <vector>

#include "orb/ssl/openssl_types.h"
#include "orb/ssl/ssl_settings.h"

namespace qv_service {

/// What the file says, and an OpenSSL context for clients that was set up by it: one that trusts any server.
struct SslProfile {
    qv_ssl::SslSettings settings;
    std::vector<std::string> remarks;  ///< sentences about options without effect
    qv_ssl::ContextPtr client;
};

/// Reads the file and loads all that it names. Throws StartError with a sentence that names the file and what
/// is wrong with it; never a pass phrase.
SslProfile LoadSslProfile(const std::string& file);

}  // namespace qv_service
