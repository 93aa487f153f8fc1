// Certificates and keys, loaded from PEM files.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "orb/ssl/openssl_types.h"
#include "orb/ssl/ssl_settings.h"

namespace qv_ssl {

/// What a process shows to its peers. Not changed once it is loaded, so threads may share it.
struct Credentials {
    CertificatePtr certificate;
    std::vector<CertificatePtr>
        chain;  ///< those between the certificate and an authority, in the file's order
    KeyPtr key;
};

// Each of these throws SslError with a sentence that names the file and the reason.

/// All certificates of a file, at least one: the own one first.
std::vector<CertificatePtr> LoadCertificates(const std::string& file);

/// The pass phrase is used when the key is encrypted. Nobody is ever asked for one.
KeyPtr LoadPrivateKey(const std::string& file, const std::optional<std::string>& pass_phrase);

/// Throws when the key is not that of the certificate. The file names are for the message.
void RequireKeyFits(X509* certificate, const std::string& certificate_file, EVP_PKEY* key,
                    const std::string& key_file);

/// All of the above, for the files of the settings. Both files must be named.
Credentials LoadCredentials(const SslSettings& settings);

/// A sentence when the certificate is expired or not yet valid at `now`; `file` is where it came from.
std::optional<std::string> ValidityProblem(const X509* certificate, const std::string& file, std::time_t now);

/// "2027-01-31 12:00:00 UTC"; "an unknown time" for a field that can't be read.
std::string TimeText(const ASN1_TIME* time);

}  // namespace qv_ssl
