#pragma once

#include <openssl/bn.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "orb/ssl/openssl_types.h"

/// OpenSSL's objects with an owner, and its errors as exceptions.
namespace qv_tools {

using qv_ssl::BioPtr;
using qv_ssl::CertificatePtr;
using qv_ssl::KeyPtr;
using BigNumberPtr = std::unique_ptr<BIGNUM, qv_ssl::FreeBy<BN_free>>;
using ExtensionPtr = std::unique_ptr<X509_EXTENSION, qv_ssl::FreeBy<X509_EXTENSION_free>>;
using RevocationListPtr = std::unique_ptr<X509_CRL, qv_ssl::FreeBy<X509_CRL_free>>;
using RevokedPtr = std::unique_ptr<X509_REVOKED, qv_ssl::FreeBy<X509_REVOKED_free>>;
using TimePtr = std::unique_ptr<ASN1_TIME, qv_ssl::FreeBy<ASN1_TIME_free>>;

/// "`what`: " and the reason that OpenSSL noted last on this thread, whose notes are cleared.
std::runtime_error OpenSslError(const std::string& what);

/// Throws OpenSslError(what) when `done`, the result of an OpenSSL call, says that it failed.
inline void Require(bool done, const char* what) {
    if (!done) {
        throw OpenSslError(what);
    }
}

}  // namespace qv_tools
