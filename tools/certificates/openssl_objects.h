#pragma once

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

/// OpenSSL's objects with an owner, and its errors as exceptions.
namespace qv_tools {

template <auto Free>
struct OpenSslFree {
    template <class Object>
    void operator()(Object* object) const {
        Free(object);
    }
};

using BioPtr = std::unique_ptr<BIO, OpenSslFree<&BIO_free_all>>;
using BigNumberPtr = std::unique_ptr<BIGNUM, OpenSslFree<&BN_free>>;
using CertificatePtr = std::unique_ptr<X509, OpenSslFree<&X509_free>>;
using ExtensionPtr = std::unique_ptr<X509_EXTENSION, OpenSslFree<&X509_EXTENSION_free>>;
using IntegerPtr = std::unique_ptr<ASN1_INTEGER, OpenSslFree<&ASN1_INTEGER_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, OpenSslFree<&EVP_PKEY_free>>;
using RevocationListPtr = std::unique_ptr<X509_CRL, OpenSslFree<&X509_CRL_free>>;
using RevokedPtr = std::unique_ptr<X509_REVOKED, OpenSslFree<&X509_REVOKED_free>>;
using TimePtr = std::unique_ptr<ASN1_TIME, OpenSslFree<&ASN1_TIME_free>>;

/// "`what`: " and the reason that OpenSSL noted last on this thread, whose notes are cleared.
std::runtime_error OpenSslError(const std::string& what);

/// Throws OpenSslError(what) when `done`, the result of an OpenSSL call, says that it failed.
inline void Require(bool done, const char* what) {
    if (!done) {
        throw OpenSslError(what);
    }
}

}  // namespace qv_tools
