#include "orb/ssl/tls_setup.h"

#include <openssl/err.h>

#include "orb/ssl/ssl_error.h"

namespace qv_ssl {
namespace {

using SourcePtr = std::shared_ptr<CredentialSource>;

[[noreturn]] void Fail(const std::string& what) {
    const unsigned long code = ERR_peek_last_error();
    const char* reason = code == 0 ? nullptr : ERR_reason_error_string(code);
    ERR_clear_error();
    throw SslError(what + " (" + (reason != nullptr ? reason : "OpenSSL gives no reason") + ")");
}

void FreeSource(void* /*parent*/, void* source, CRYPTO_EX_DATA* /*data*/, int /*index*/, long /*argl*/,
                void* /*argp*/) {
    delete static_cast<SourcePtr*>(source);
}

// Where a context keeps its credentials.
int SourceIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, &FreeSource);
    return index;
}

bool Show(SSL* connection, const Credentials& credentials) {
    STACK_OF(X509)* const chain = sk_X509_new_null();
    bool done = chain != nullptr;
    for (const CertificatePtr& link : credentials.chain) {
        done = done && sk_X509_push(chain, link.get()) > 0;
    }
    done = done && SSL_use_cert_and_key(connection, credentials.certificate.get(), credentials.key.get(),
                                        chain, 1) == 1;
    sk_X509_free(chain);
    return done;
}

// Runs on the thread of the handshake. A certificate of the context itself would be copied without a lock
// while another thread replaces it.
int ShowCurrent(SSL* connection, void* /*argument*/) {
    const auto* const source =
        static_cast<SourcePtr*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), SourceIndex()));
    const std::shared_ptr<const Credentials> credentials = (*source)->Current();
    SSL_certs_clear(connection);
    return Show(connection, *credentials) ? 1 : 0;
}

void LoadAuthorities(SSL_CTX* context, const SslSettings& settings) {
    const std::string& file = settings.authority_file;
    if (!file.empty()) {
        LoadCertificates(file);  // for its sentences
        if (SSL_CTX_load_verify_file(context, file.c_str()) != 1) {
            Fail("the authority file " + file + " can't be used");
        }
        // A client with several certificates chooses by these names.
        SSL_CTX_set_client_CA_list(context, SSL_load_client_CA_file(file.c_str()));
    }
    if (!settings.authority_directory.empty() &&
        SSL_CTX_load_verify_dir(context, settings.authority_directory.c_str()) != 1) {
        Fail("the directory of authorities " + settings.authority_directory + " can't be used");
    }
}

void SetCiphers(SSL_CTX* context, const SslSettings& settings) {
    if (!settings.ciphers.empty() && SSL_CTX_set_cipher_list(context, settings.ciphers.c_str()) != 1) {
        Fail("-SSLCipherList in " + settings.profile + " names no cipher that can be used");
    }
    if (settings.server_chooses_cipher) {
        SSL_CTX_set_options(context, SSL_OP_CIPHER_SERVER_PREFERENCE);
    }
}

}  // namespace

int VerifyMode(const SslSettings& settings) {
    if (!VerifiesPeers(settings.authenticate)) {
        return SSL_VERIFY_NONE;
    }
    return RequiresClientCertificate(settings.authenticate)
               ? SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT
               : SSL_VERIFY_PEER;
}

void SetUpContext(SSL_CTX* context, const SslSettings& settings, const SourcePtr& credentials) {
    ERR_clear_error();
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    // Renegotiation costs the server ten times what it costs a client; nobody here needs it.
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
    // Each connection verifies its peer anew. ORBs keep connections for long and don't resume sessions; a
    // cache of them would only grow.
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_dh_auto(context, 1);
    LoadAuthorities(context, settings);
    SetCiphers(context, settings);
    SSL_CTX_set_verify(context, VerifyMode(settings), nullptr);
    if (credentials) {
        auto kept = std::make_unique<SourcePtr>(credentials);
        if (SSL_CTX_set_ex_data(context, SourceIndex(), kept.get()) != 1) {
            Fail("the SSL context has no room for its certificate");
        }
        static_cast<void>(kept.release());
        SSL_CTX_set_cert_cb(context, &ShowCurrent, nullptr);
        // What OpenSSL would refuse to show (a key that is too short) is to stop the start, not each
        // handshake.
        const ConnectionPtr trial(SSL_new(context));
        if (!trial || !Show(trial.get(), *credentials->Current())) {
            Fail("the certificate in " + settings.certificate_file + " can't be used");
        }
    }
    ERR_clear_error();
}

void RequireComplete(const SslSettings& settings, bool serves) {
    const std::string& profile = settings.profile;
    if (settings.certificate_file.empty() != settings.private_key_file.empty()) {
        throw SslError("the service configuration file " + profile + " gives a " +
                       (settings.certificate_file.empty() ? "-SSLPrivateKey but no -SSLCertificate"
                                                          : "-SSLCertificate but no -SSLPrivateKey"));
    }
    if (serves && settings.certificate_file.empty()) {
        throw SslError("the service configuration file " + profile +
                       " gives no -SSLCertificate and -SSLPrivateKey, so no client could connect by SSL");
    }
    if (VerifiesPeers(settings.authenticate) && settings.authority_file.empty() &&
        settings.authority_directory.empty()) {
        throw SslError("the service configuration file " + profile +
                       " gives no -SSLCAfile, so no peer's certificate could be verified");
    }
}

}  // namespace qv_ssl
