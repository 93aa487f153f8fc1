#include "orb/ssl/tls_setup.h"

#include <gtest/gtest.h>

#include "orb/ssl/ssl_error.h"
#include "tests/support/certificates/test_authority.h"

namespace {

using namespace qv_test;
using qv_ssl::SslSettings;

class TlsSetupTest : public ::testing::Test {
  protected:
    std::string Failure(bool serves = true) const {
        try {
            qv_ssl::RequireComplete(settings, serves);
            const qv_ssl::ContextPtr context(SSL_CTX_new(TLS_method()));
            qv_ssl::SetUpContext(context.get(), settings, nullptr);
            return "";
        } catch (const qv_ssl::SslError& error) {
            return error.what();
        }
    }

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    SslSettings settings = [this] {
        SslSettings made;
        made.profile = "the.conf";
        made.certificate_file = "c.pem";
        made.private_key_file = "k.pem";
        made.authority_file = authority.File();
        return made;
    }();
};

TEST_F(TlsSetupTest, IsCompleteWithAllFiles) {
    EXPECT_EQ(Failure(), "");
}

TEST_F(TlsSetupTest, AKeyAndItsCertificateGoTogether) {
    settings.private_key_file = "";
    EXPECT_EQ(Failure(),
              "the service configuration file the.conf gives a -SSLCertificate but no -SSLPrivateKey");
    settings.private_key_file = "k.pem";
    settings.certificate_file = "";
    EXPECT_EQ(Failure(),
              "the service configuration file the.conf gives a -SSLPrivateKey but no -SSLCertificate");
    settings.private_key_file = "";
    EXPECT_EQ(Failure(),
              "the service configuration file the.conf gives no -SSLCertificate and -SSLPrivateKey, so no "
              "client could connect by SSL");
    EXPECT_EQ(Failure(false), "") << "a client that shows no certificate";
}

TEST_F(TlsSetupTest, WhoVerifiesNeedsAuthorities) {
    settings.authority_file = "";
    EXPECT_EQ(Failure(),
              "the service configuration file the.conf gives no -SSLCAfile, so no peer's certificate "
              "could be verified");
    settings.authenticate = qv_ssl::Authenticate::kNone;
    EXPECT_EQ(Failure(), "");
}

TEST_F(TlsSetupTest, ACipherListMustNameOne) {
    settings.ciphers = "NONSENSE";
    EXPECT_EQ(Failure().substr(0, 60), "-SSLCipherList in the.conf names no cipher that can be used ");
}

TEST_F(TlsSetupTest, VerificationFollowsTheMode) {
    settings.authenticate = qv_ssl::Authenticate::kNone;
    EXPECT_EQ(qv_ssl::VerifyMode(settings), SSL_VERIFY_NONE);
    settings.authenticate = qv_ssl::Authenticate::kServer;
    EXPECT_EQ(qv_ssl::VerifyMode(settings), SSL_VERIFY_PEER);
    for (const auto mode : {qv_ssl::Authenticate::kClient, qv_ssl::Authenticate::kServerAndClient}) {
        settings.authenticate = mode;
        EXPECT_EQ(qv_ssl::VerifyMode(settings), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT);
    }
}

TEST_F(TlsSetupTest, OldVersionsAndRenegotiationAreOff) {
    const qv_ssl::ContextPtr context(SSL_CTX_new(TLS_method()));
    qv_ssl::SetUpContext(context.get(), settings, nullptr);
    EXPECT_EQ(SSL_CTX_get_min_proto_version(context.get()), TLS1_2_VERSION);
    EXPECT_NE(SSL_CTX_get_options(context.get()) & SSL_OP_NO_RENEGOTIATION, 0u);
    EXPECT_EQ(SSL_CTX_get_num_tickets(context.get()), 0u);
}

}  // namespace
