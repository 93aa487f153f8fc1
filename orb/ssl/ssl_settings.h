// What a service configuration file says about SSL.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qv_ssl {

/// Who proves its identity, as "-SSLAuthenticate" has it.
enum class Authenticate {
    kNone,            ///< nobody is asked for a certificate
    kServer,          ///< servers; a client's certificate is verified when it shows one
    kClient,          ///< both, as the ORB that these options come from has it
    kServerAndClient  ///< both
};

/// The options of the SSLIOP factory. Paths stand as they were given, without their "PEM:". Empty: not given.
struct SslSettings {
    std::string profile;  ///< the file that this was read from
    std::string private_key_file;
    std::optional<std::string> pass_phrase;  ///< of the private key
    std::string certificate_file;            ///< the certificate, and those between it and an authority
    std::string authority_file;
    std::string authority_directory;  ///< of hashed names, as openssl rehash makes it
    Authenticate authenticate = Authenticate::kServer;
    bool no_protection = false;  ///< requests in clear are served too
    std::string ciphers;         ///< for TLS 1.2; empty: OpenSSL's own list
    bool server_chooses_cipher = false;
    bool protocol_named =
        false;  ///< a "-ORBProtocolFactory" names the factory, without which TAO does not use it
};

/// What stands in a service configuration file.
struct ServiceConfig {
    std::optional<SslSettings> ssl;    ///< none when the file has no SSLIOP factory
    std::vector<std::string> remarks;  ///< a sentence per option that has no effect here
};

/// Whether a peer's certificate is looked at in this mode.
inline bool VerifiesPeers(Authenticate mode) {
    return mode != Authenticate::kNone;
}
/// Whether a client has to show a certificate in this mode.
inline bool RequiresClientCertificate(Authenticate mode) {
    return mode == Authenticate::kClient || mode == Authenticate::kServerAndClient;
}

}  // namespace qv_ssl
