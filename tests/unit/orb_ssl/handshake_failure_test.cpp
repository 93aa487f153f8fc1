#include "orb/ssl/handshake_failure.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/sslerr.h>

namespace {

using qv_ssl::DescribeFailure;

std::string OfReason(int reason, long verification = X509_V_OK) {
    return DescribeFailure(ERR_PACK(ERR_LIB_SSL, 0, reason), verification);
}

TEST(HandshakeFailure, TellsWhatThePeerDidAndWhatToDo) {
    EXPECT_EQ(OfReason(SSL_R_PEER_DID_NOT_RETURN_A_CERTIFICATE),
              "shows no certificate; give it one of a known authority");
    EXPECT_EQ(OfReason(SSL_R_UNSUPPORTED_PROTOCOL),
              "does not offer TLS 1.2 or later; renew its SSL library or set-up");
    EXPECT_EQ(OfReason(SSL_R_WRONG_VERSION_NUMBER),
              "does not speak TLS on this port; let it use SSL (ssliop) or the plain port");
    EXPECT_EQ(OfReason(SSL_R_HTTP_REQUEST), OfReason(SSL_R_WRONG_VERSION_NUMBER));
    EXPECT_EQ(OfReason(SSL_R_NO_SHARED_CIPHER),
              "offers no cipher that is accepted here; check -SSLCipherList on both sides");
}

TEST(HandshakeFailure, TellsWhyACertificateIsNotAccepted) {
    constexpr int kVerify = SSL_R_CERTIFICATE_VERIFY_FAILED;
    EXPECT_EQ(
        OfReason(kVerify, X509_V_ERR_CERT_HAS_EXPIRED),
        "shows a certificate that has expired; give it a new one, and check the clocks of both machines");
    EXPECT_EQ(OfReason(kVerify, X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN),
              OfReason(kVerify, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY));
    EXPECT_EQ(OfReason(kVerify, X509_V_ERR_CERT_CHAIN_TOO_LONG),
              "shows a certificate that can't be verified (certificate chain too long); give it another one");
}

TEST(HandshakeFailure, TellsAPeersRefusal) {
    EXPECT_EQ(OfReason(SSL_AD_REASON_OFFSET + SSL_AD_UNKNOWN_CA), qv_ssl::DescribeAlert(SSL_AD_UNKNOWN_CA));
    EXPECT_EQ(qv_ssl::DescribeAlert(SSL_AD_CERTIFICATE_REQUIRED),
              "wants a certificate and got none; give this side -SSLCertificate and -SSLPrivateKey");
    EXPECT_EQ(qv_ssl::DescribeAlert(SSL_AD_INTERNAL_ERROR),
              "refuses the connection (internal error); see what the peer itself reports");
}

TEST(HandshakeFailure, HasWordsForEverythingElse) {
    OPENSSL_init_ssl(OPENSSL_INIT_LOAD_SSL_STRINGS, nullptr);
    EXPECT_EQ(DescribeFailure(0, X509_V_OK),
              "closed the connection within the handshake; see what the peer itself reports");
    EXPECT_EQ(OfReason(SSL_R_BAD_SIGNATURE),
              "broke off the handshake (bad signature); see what the peer itself reports");
    EXPECT_EQ(DescribeFailure(ERR_PACK(ERR_LIB_USER, 0, 4000), X509_V_OK),
              "failed in the handshake (no reason known); see what the peer itself reports");
}

}  // namespace
