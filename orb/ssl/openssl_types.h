// Owners of OpenSSL's objects.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <memory>

namespace qv_ssl {

template <auto Function>
struct FreeBy {
    template <typename T>
    void operator()(T* object) const {
        Function(object);
    }
};

using BioPtr = std::unique_ptr<BIO, FreeBy<BIO_free>>;
using CertificatePtr = std::unique_ptr<X509, FreeBy<X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, FreeBy<EVP_PKEY_free>>;
using ContextPtr = std::unique_ptr<SSL_CTX, FreeBy<SSL_CTX_free>>;
using ConnectionPtr = std::unique_ptr<SSL, FreeBy<SSL_free>>;

}  // namespace qv_ssl
