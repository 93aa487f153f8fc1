// OpenSSL's side of a process that speaks TLS.
#pragma once

#include <chrono>
#include <memory>

#include "orb/ssl/credential_source.h"
#include "orb/ssl/openssl_types.h"
#include "orb/ssl/ssl_settings.h"

namespace qv_ssl {

/// How long a server waits for a peer's handshake, which has a thread meanwhile. A peer across the world
/// needs less than a second.
constexpr std::chrono::milliseconds kHandshakePatience{5000};

/// The verification mode, as SSL_CTX_set_verify takes it, that the settings ask for.
int VerifyMode(const SslSettings& settings);

/// Makes the context speak TLS 1.2 and later, verify peers by the authorities, and show what `credentials`
/// has at the time of each handshake; null credentials show nothing. The context keeps a count of them.
/// Throws SslError with a sentence that names file or option.
void SetUpContext(SSL_CTX* context, const SslSettings& settings,
                  const std::shared_ptr<CredentialSource>& credentials);

/// Throws SslError when the files of the settings do not make a usable whole: a key without its certificate,
/// no authorities where peers are to be verified, a server (`serves`) without a certificate.
void RequireComplete(const SslSettings& settings, bool serves);

}  // namespace qv_ssl
