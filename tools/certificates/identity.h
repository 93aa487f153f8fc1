#pragma once

#include <openssl/types.h>

#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace qv_tools {

/// From when until when something holds, in seconds since 1970.
struct Period {
    std::time_t from = 0;
    std::time_t until = 0;
};

/// A certificate with its private key, an elliptic curve's (P-256). Copies share both, and nobody changes
/// them once they are made, so any thread may use one.
struct Identity {
    std::shared_ptr<EVP_PKEY> key;
    std::shared_ptr<X509> certificate;
};

/// What a certificate says of its owner.
struct Subject {
    std::string name;                ///< common name
    std::vector<std::string> hosts;  ///< host names and addresses at which the owner is found
    bool authority = false;          ///< may issue certificates and revocation lists
};

/// A new key with a certificate that it signs itself. Throws std::runtime_error when OpenSSL fails, as all
/// functions here.
Identity MakeSelfSigned(const Subject& subject, const Period& period);

/// A new key with a certificate that `issuer` signs, for servers and clients alike.
Identity Issue(const Identity& issuer, const Subject& subject, const Period& period);

/// The PEM text of a revocation list by `issuer` that revokes the certificates of `revoked`. `period` is that
/// from its date to that of the next update.
std::string MakeRevocationList(const Identity& issuer, const std::vector<Identity>& revoked,
                               const Period& period);

}  // namespace qv_tools
