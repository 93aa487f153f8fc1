#pragma once

#include <string>
#include <vector>

#include "orb/ssl/openssl_types.h"
#include "orb/ssl/ssl_settings.h"
#include "tools/ssl/certificate_check.h"
#include "tools/ssl/finding.h"

namespace qv_tools {

/// Looks whether a peer with the same authorities will trust the certificate, as a server's and as a
/// client's: the agent is both. Its period is not a matter of this check. Nothing is found for an empty
/// chain.
void CheckChain(const qv_ssl::SslSettings& settings, const std::vector<qv_ssl::CertificatePtr>& own,
                Findings& findings);

/// Whether the certificate's period is on, and for how many days.
Finding ValidityFinding(const X509* certificate, const std::string& file, const CheckTime& time);

}  // namespace qv_tools
