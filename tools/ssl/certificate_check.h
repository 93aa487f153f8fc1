#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "orb/ssl/openssl_types.h"
#include "orb/ssl/ssl_settings.h"
#include "tools/ssl/finding.h"

namespace qv_tools {

/// When it is, and from how many days before its end on a certificate is warned of.
struct CheckTime {
    std::time_t now = 0;
    long warn_days = 30;
};

/// What could be loaded of the files that a profile names. Each list may be empty.
struct LoadedCertificates {
    std::vector<qv_ssl::CertificatePtr> own;          ///< the certificate itself, then its chain
    std::vector<qv_ssl::CertificatePtr> authorities;  ///< in the order of the authority file
};

/// Loads and checks certificate, key and authorities: files, pass phrase, whether they belong together,
/// whether peers will trust the certificate, and for how long.
LoadedCertificates CheckCertificates(const qv_ssl::SslSettings& settings, const CheckTime& time,
                                     Findings& findings);

}  // namespace qv_tools
