#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/certificates/test_authority.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {
namespace {

using qv_tools::ProfileOptions;
using ::testing::HasSubstr;

namespace fs = std::filesystem;

/// What is made is looked at with OpenSSL's own command.
class CertificateMaker : public ::testing::Test {
  protected:
    static RunResult OpenSsl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "openssl");
        return qv_test::Run(arguments);
    }
    static RunResult Verify(const IssuedFiles& files) {
        return OpenSsl({"verify", "-x509_strict", "-CAfile", files.authorities, "-untrusted",
                        files.certificate, files.certificate});
    }

    TempDir m_dir;
    TestAuthority m_authority{m_dir, "authority"};
};

TEST_F(CertificateMaker, CertificatesVerifyAgainstTheirAuthorityOnly) {
    const TempDir elsewhere;
    const TestAuthority stranger(elsewhere, "authority");
    IssuedFiles files = m_authority.Issue("agent");
    EXPECT_EQ(0, Verify(files).code) << Verify(files).err;
    files.authorities = stranger.File();
    EXPECT_NE(0, Verify(files).code);
}

TEST_F(CertificateMaker, CertificatesServeBothSides) {
    const IssuedFiles files = m_authority.Issue("agent");
    for (const char* const purpose : {"sslserver", "sslclient"}) {
        EXPECT_EQ(
            0, OpenSsl({"verify", "-purpose", purpose, "-CAfile", files.authorities, files.certificate}).code)
            << purpose;
    }
    EXPECT_EQ(
        0,
        OpenSsl({"verify", "-verify_ip", "127.0.0.1", "-CAfile", files.authorities, files.certificate}).code);
    EXPECT_NE(
        0,
        OpenSsl({"verify", "-verify_ip", "127.0.0.9", "-CAfile", files.authorities, files.certificate}).code);
}

TEST_F(CertificateMaker, AChainOfTwoVerifiesAgainstItsEnd) {
    const TestAuthority intermediate = m_authority.Intermediate("intermediate");
    const IssuedFiles files = intermediate.Issue("agent");
    EXPECT_EQ(m_authority.File(), files.authorities);
    EXPECT_EQ(0, Verify(files).code) << Verify(files).err;
    EXPECT_NE(0, OpenSsl({"verify", "-CAfile", files.authorities, files.certificate}).code)
        << "without the intermediate authority";
}

TEST_F(CertificateMaker, PeriodsAreKept) {
    EXPECT_THAT(Verify(m_authority.Issue("old", "", Holds::kNoMore)).err,
                HasSubstr("certificate has expired"));
    EXPECT_THAT(Verify(m_authority.Issue("young", "", Holds::kNotYet)).err, HasSubstr("not yet valid"));
}

TEST_F(CertificateMaker, AKeyOpensWithItsPassPhraseAlone) {
    const IssuedFiles files = m_authority.Issue("agent", "the-right-one");
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(files.key).permissions());
    EXPECT_THAT(ReadFile(files.key), HasSubstr("ENCRYPTED"));
    EXPECT_EQ(0, OpenSsl({"pkey", "-in", files.key, "-passin", "pass:the-right-one", "-noout"}).code);
    EXPECT_NE(0, OpenSsl({"pkey", "-in", files.key, "-passin", "pass:another", "-noout"}).code);
    EXPECT_EQ(0, OpenSsl({"pkey", "-in", m_authority.Issue("plain").key, "-passin", "pass:", "-noout"}).code);
}

TEST_F(CertificateMaker, AKeyFitsItsCertificate) {
    const IssuedFiles files = m_authority.Issue("agent");
    const std::string ofKey = OpenSsl({"pkey", "-in", files.key, "-pubout"}).out;
    EXPECT_THAT(ofKey, HasSubstr("PUBLIC KEY"));
    EXPECT_EQ(ofKey, OpenSsl({"x509", "-in", files.certificate, "-noout", "-pubkey"}).out);
}

TEST_F(CertificateMaker, ARevocationListRevokesWhatItNames) {
    const IssuedFiles good = m_authority.Issue("good");
    const IssuedFiles bad = m_authority.Issue("bad");
    const std::string list = m_authority.WriteRevocationList("crl/a.crl", {bad});
    const auto check = [&](const IssuedFiles& files) {
        return OpenSsl(
            {"verify", "-crl_check", "-CRLfile", list, "-CAfile", files.authorities, files.certificate});
    };
    EXPECT_EQ(0, check(good).code) << check(good).err;
    EXPECT_THAT(check(bad).err, HasSubstr("certificate revoked"));
    m_authority.WriteRevocationList("crl/a.crl", {}, Holds::kNoMore);
    EXPECT_THAT(check(good).err, HasSubstr("CRL has expired"));
}

TEST_F(CertificateMaker, AProfileHasItsOptionsOnALineAndAgainOneByOne) {
    ProfileOptions options;
    options.authenticate = "SERVER";
    options.pass_phrase = "secret";
    options.key = "/k.pem";
    options.certificate = "/c.pem";
    options.authorities = "/a.pem";
    options.no_protection = true;
    EXPECT_EQ(
        "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory() "
        "\"-SSLPrivateKeyPasswd secret -SSLPrivateKey PEM:/k.pem -SSLCertificate PEM:/c.pem "
        "-SSLCAfile PEM:/a.pem -SSLAuthenticate SERVER -SSLNoProtection\"\n"
        "static Resource_Factory \"-ORBProtocolFactory SSLIOP_Factory\"\n"
        "# The agent takes the options from the lines below. Keep them the same as above.\n"
        "# -SSLPrivateKeyPasswd secret\n# -SSLPrivateKey PEM:/k.pem\n# -SSLCertificate PEM:/c.pem\n"
        "# -SSLCAfile PEM:/a.pem\n",
        ProfileText(options));
}

TEST_F(CertificateMaker, AProfileLeavesOutWhatIsEmpty) {
    ProfileOptions options;
    options.authorities = "/a.pem";
    const std::string text = ProfileText(options);
    EXPECT_THAT(text, HasSubstr("\"-SSLCAfile PEM:/a.pem \"\n"));
    EXPECT_THAT(text, ::testing::Not(HasSubstr("-SSLPrivateKey")));
    EXPECT_THAT(text, ::testing::Not(HasSubstr("-SSLNoProtection")));
}

TEST_F(CertificateMaker, AProfileRefusesWhatItCantHold) {
    for (const std::string& value :
         {std::string("two words"), std::string("a\"quote"), std::string("line\nend"), std::string("a#b"),
          std::string("$HOME"), std::string(500, 'x')}) {
        ProfileOptions options;
        options.pass_phrase = value;
        EXPECT_THROW(ProfileText(options), std::invalid_argument) << value;
    }
}

TEST_F(CertificateMaker, AFileThatCantBeWrittenIsNamed) {
    try {
        qv_tools::WriteFile(m_dir.File("none/x.pem"), "text", 0600);
        FAIL() << "written";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(m_dir.File("none/x.pem") + " can't be written: No such file or directory", error.what());
    }
}

TEST_F(CertificateMaker, AFileIsReplacedAtOnceAndNothingStaysBeside) {
    qv_tools::WriteFile(m_dir.File("x.pem"), "former", 0644);
    qv_tools::WriteFile(m_dir.File("x.pem"), "new", 0600);
    EXPECT_EQ("new", ReadFile(m_dir.File("x.pem")));
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(m_dir.File("x.pem")).permissions());
    for (const fs::directory_entry& entry : fs::directory_iterator(m_dir.path())) {
        EXPECT_THAT((std::vector<std::string>{"x.pem", "authority.pem"}),
                    ::testing::Contains(entry.path().filename().string()));
    }
}

}  // namespace
}  // namespace qv_test
