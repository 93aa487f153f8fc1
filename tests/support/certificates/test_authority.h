#pragma once

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/certificates/credential_files.h"
#include "tools/certificates/identity.h"

/// Certificates, keys, revocation lists and service configuration files, made at test time in the test's own
/// directory. An example:
///
///     TempDir dir;
///     const TestAuthority authority(dir, "authority");
///     const IssuedFiles agent = authority.Issue("agent", "pass-phrase");
///     authority.WriteRevocationList("crl/revoked.crl", {agent});
///     const std::string profile = WriteProfile(dir, "agent.conf", agent);
///
/// Whatever goes wrong throws std::exception. Nothing here is for more than one thread at a time.
namespace qv_test {

/// When a certificate or a list holds, as seen from now.
enum class Holds { kNow, kNoMore, kNotYet };

/// A certificate with its key, and the files that they are in.
struct IssuedFiles {
    qv_tools::Identity identity;
    std::string certificate;  ///< path; PEM, the certificate itself first and then those of its chain
    std::string key;          ///< path; PEM, mode 0600
    std::string pass_phrase;  ///< of the key; empty: the key isn't encrypted
    std::string authorities;  ///< path of the certificate that a peer has to trust
};

/// An authority, whose own certificate is NAME.pem in the directory, which must outlive it. Two of the same
/// name in two directories have the same name in their certificates and different keys.
class TestAuthority {
  public:
    TestAuthority(const TempDir& dir, const std::string& name, Holds holds = Holds::kNow);

    /// The path of its certificate.
    const std::string& File() const { return m_file; }

    /// A new certificate with its key: NAME.pem and NAME-key.pem, made anew when they are there. It names
    /// "localhost" and "127.0.0.1" as hosts.
    IssuedFiles Issue(const std::string& name, const std::string& passPhrase = {},
                      Holds holds = Holds::kNow) const;

    /// An authority below this one. What it issues has a chain of two, and peers trust this one.
    TestAuthority Intermediate(const std::string& name) const;

    /// Writes a revocation list by this authority to `file`, a path in the directory, and returns the whole
    /// path.
    std::string WriteRevocationList(const std::string& file, const std::vector<IssuedFiles>& revoked,
                                    Holds holds = Holds::kNow) const;

  private:
    TestAuthority(const TestAuthority& root, const std::string& name);

    const TempDir* m_dir;
    qv_tools::Identity m_identity;
    std::string m_file;
    std::string m_trusted;                    // path of the certificate at the chain's end
    std::vector<qv_tools::Identity> m_chain;  // to be sent along with what is issued
};

/// Service configuration options that take both sides' certificates for granted. Change them at will.
qv_tools::ProfileOptions OptionsFor(const IssuedFiles& files);

/// Writes a service configuration file (mode 0600) and returns its path.
std::string WriteProfile(const TempDir& dir, const std::string& name,
                         const qv_tools::ProfileOptions& options);
std::string WriteProfile(const TempDir& dir, const std::string& name, const IssuedFiles& files);

}  // namespace qv_test
