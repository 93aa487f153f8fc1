#include "orb/ssl/credentials.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "orb/ssl/ssl_error.h"
#include "tests/support/certificates/test_authority.h"

namespace {

using namespace qv_test;

class CredentialsTest : public ::testing::Test {
  protected:
    template <class Function>
    static std::string Failure(Function function) {
        try {
            function();
            return "";
        } catch (const qv_ssl::SslError& error) {
            return error.what();
        }
    }
    static qv_ssl::SslSettings SettingsOf(const IssuedFiles& files) {
        qv_ssl::SslSettings settings;
        settings.certificate_file = files.certificate;
        settings.private_key_file = files.key;
        settings.pass_phrase = files.pass_phrase;
        return settings;
    }

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    IssuedFiles files = authority.Issue("agent", "open sesame");
};

TEST_F(CredentialsTest, AreLoadedWithTheirChain) {
    const IssuedFiles chained = authority.Intermediate("department").Issue("employee", "phrase");
    const qv_ssl::Credentials credentials = qv_ssl::LoadCredentials(SettingsOf(chained));
    EXPECT_EQ(X509_cmp(credentials.certificate.get(), chained.identity.certificate.get()), 0);
    EXPECT_EQ(credentials.chain.size(), 1u);
    EXPECT_EQ(EVP_PKEY_eq(credentials.key.get(), chained.identity.key.get()), 1);
}

TEST_F(CredentialsTest, AKeyThatIsNotEncryptedNeedsNoPassPhrase) {
    const IssuedFiles open = authority.Issue("open");
    EXPECT_TRUE(qv_ssl::LoadPrivateKey(open.key, std::nullopt));
    EXPECT_TRUE(qv_ssl::LoadPrivateKey(open.key, "not needed"));
}

TEST_F(CredentialsTest, AWrongPassPhraseIsSaidAndNotShown) {
    EXPECT_EQ(Failure([&] { qv_ssl::LoadPrivateKey(files.key, "wrong one"); }),
              "the private key file " + files.key +
                  " can't be used: the pass phrase of -SSLPrivateKeyPasswd does not open it");
    EXPECT_EQ(Failure([&] { qv_ssl::LoadPrivateKey(files.key, std::nullopt); }),
              "the private key file " + files.key +
                  " can't be used: it is encrypted and no -SSLPrivateKeyPasswd is given");
    EXPECT_NE(Failure([&] { qv_ssl::LoadPrivateKey(files.key, std::string(5000, 'x')); }), "");
    EXPECT_NE(Failure([&] { qv_ssl::LoadPrivateKey(files.key, ""); }), "");
}

TEST_F(CredentialsTest, AFileOfAnotherKindIsNamed) {
    EXPECT_EQ(Failure([&] { qv_ssl::LoadPrivateKey(files.certificate, std::nullopt); }),
              "the private key file " + files.certificate +
                  " can't be used: it holds no readable private key in PEM form");
    EXPECT_EQ(Failure([&] { qv_ssl::LoadCertificates(files.key); }),
              "the certificate file " + files.key + " can't be used: it holds no certificate in PEM form");
    EXPECT_EQ(Failure([&] { qv_ssl::LoadCertificates(dir.str()); }),
              "the certificate file " + dir.str() + " can't be used: it is a directory");
    EXPECT_EQ(Failure([&] { qv_ssl::LoadCertificates(dir.File("none")); }),
              "the certificate file " + dir.File("none") + " can't be used: No such file or directory");
    const std::string empty = dir.Write("empty.pem", "");
    EXPECT_EQ(Failure([&] { qv_ssl::LoadCertificates(empty); }),
              "the certificate file " + empty + " can't be used: it holds no certificate in PEM form");
}

TEST_F(CredentialsTest, ADamagedSecondCertificateIsNamed) {
    const std::string good = ReadFile(files.certificate);
    const std::string file =
        dir.Write("damaged.pem", good + "-----BEGIN CERTIFICATE-----\nMIIB\n-----END CERTIFICATE-----\n");
    EXPECT_EQ(Failure([&] {
                  qv_ssl::LoadCertificates(file);
              }).find("the certificate file " + file + " can't be used: certificate 2 is damaged ("),
              0u);
}

TEST_F(CredentialsTest, ACertificateThatClaimsToBeEncryptedAsksNobody) {
    const std::string begin = "-----BEGIN CERTIFICATE-----\n";
    const std::string good = ReadFile(files.certificate);
    const std::string file = dir.Write(
        "encrypted.pem",
        begin + "Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF\n\n" +
            good.substr(good.find(begin) + begin.size()));
    EXPECT_EQ(Failure([&] {
                  qv_ssl::LoadCertificates(file);
              }).find("the certificate file " + file + " can't be used: certificate 1 is damaged ("),
              0u);
}

TEST_F(CredentialsTest, AKeyOfAnotherCertificateIsNamed) {
    const IssuedFiles other = authority.Issue("other");
    qv_ssl::SslSettings settings = SettingsOf(files);
    settings.private_key_file = other.key;
    EXPECT_EQ(Failure([&] { qv_ssl::LoadCredentials(settings); }),
              "the private key file " + other.key +
                  " can't be used: its key is not that of the certificate in " + files.certificate);
}

TEST_F(CredentialsTest, ValidityIsLookedAtForTheGivenTime) {
    const X509* const certificate = files.identity.certificate.get();
    const std::time_t now = std::time(nullptr);
    EXPECT_FALSE(qv_ssl::ValidityProblem(certificate, "c.pem", now));
    constexpr std::time_t kYears = std::time_t{50} * 365 * 86400;
    EXPECT_NE(qv_ssl::ValidityProblem(certificate, "c.pem", now + kYears)->find("c.pem expired on "),
              std::string::npos);
    EXPECT_NE(qv_ssl::ValidityProblem(certificate, "c.pem", now - kYears)->find("c.pem is not valid before "),
              std::string::npos);
}

TEST(TimeText, IsReadable) {
    ASN1_TIME* const time = ASN1_TIME_set(nullptr, 0);
    EXPECT_EQ(qv_ssl::TimeText(time), "1970-01-01 00:00:00 UTC");
    ASN1_TIME_free(time);
    EXPECT_EQ(qv_ssl::TimeText(nullptr), "an unknown time");
}

}  // namespace
