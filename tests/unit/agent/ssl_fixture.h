#pragma once

#include <openssl/x509.h>

#include <filesystem>

#include "tests/support/certificates/test_authority.h"
#include "tests/unit/agent/agent_fixture.h"

namespace qv_test {

inline constexpr const char* kSource = "ssl_certificates";
inline constexpr const char* kPassPhrase = "known-to-the-key-alone";
inline constexpr const char* kVerifySnippet = "X509_verify_cert ret error";

/// What is logged of a verification that ends with that error.
inline std::string VerifyFailed(int error) {
    return "[CorbaBaseAgentConfig::verifyNBICertCRL]: X509_verify_cert ret error 0, verify cer error " +
           std::to_string(error) + ", info:" + X509_verify_cert_error_string(error);
}

/// An agent with a certificate and a directory of revocation lists.
class SslCertificates : public AgentTest {
  protected:
    SslCertificates() { std::filesystem::create_directories(Lists()); }

    std::string Lists() const { return m_dir.File("share/etc/ssl/nbi/crl/"); }

    std::string WriteList(const std::string& name, const std::vector<IssuedFiles>& revoked,
                          Holds holds = Holds::kNow) {
        return m_authority.WriteRevocationList("share/etc/ssl/nbi/crl/" + name, revoked, holds);
    }

    /// Writes three lists that revoke nothing of interest; their names in the order of their directory.
    std::vector<std::string> ThreeLists() {
        for (const char* const name : {"a.crl", "b.crl", "c.crl"}) {
            WriteList(name, {m_other});
        }
        std::vector<std::string> names;
        config().GetCRLFileList(names, Lists());
        return names;
    }

    /// Lets the configuration read the profile with these lines, in mode 1.
    void ReadProfile(const std::string& text) {
        Probe::SSLProfile() = m_dir.Write("agent.conf", text);
        Probe::SSLMode() = 1;
        config().GetNBISSLCertificateInfo();
    }
    void ReadProfileOf(const IssuedFiles& files) { ReadProfile(ProfileText(OptionsFor(files))); }

    /// Is the certificate revoked by that list, as far as the configuration can tell?
    bool Passes(const IssuedFiles& files, const std::string& list) {
        return config().verifyNBICertCRL(files.authorities, files.certificate, list);
    }

    std::vector<std::string> Texts(const std::string& channel) {
        std::vector<std::string> texts;
        for (const LogEntry& entry : m_log->Entries(channel)) {
            texts.push_back(entry.text);
        }
        return texts;
    }

    void ExpectVerifyFailed(int error) {
        ExpectLog(kSys, -1, kSource, VerifyFailed(error), kVerifySnippet);
        EXPECT_THAT(Texts(kSys), ::testing::ElementsAre(VerifyFailed(error)));
        EXPECT_THAT(Texts(kDebug), ::testing::IsEmpty());
    }

    ScopedEnv m_share{"_APP_SHARE_DIR", m_dir.File("share")};
    TestAuthority m_authority{m_dir, "authority"};
    IssuedFiles m_agent = m_authority.Issue("agent", kPassPhrase);
    IssuedFiles m_other = m_authority.Issue("other");
};

}  // namespace qv_test
