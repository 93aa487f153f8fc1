#include "tests/unit/agent/interposed.h"
#include "tests/unit/agent/ssl_fixture.h"

namespace qv_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace fs = std::filesystem;

TEST_F(SslCertificates, AListIsKnownByItsName) {
    for (const char* const name : {"x.crl", "x.CRL", ".crl", "x.crl.bak", "x.CRLs", "a.crl.CRL"}) {
        EXPECT_TRUE(config().IsCRLFile(name)) << name;
    }
    for (const char* const name : {"", "crl", "notcrl.txt", "x.Crl", "x.cRL", "x.pem", "x.cr"}) {
        EXPECT_FALSE(config().IsCRLFile(name)) << name;
    }
}

TEST_F(SslCertificates, ListsAreNamedWithoutTheirDirectory) {
    for (const char* const name : {"x.crl.bak", "X.CRL", "notcrl.txt", "y.pem"}) {
        m_dir.Write(std::string("lists/") + name, "");
    }
    fs::create_directory(m_dir.File("lists/folder.crl"));
    std::vector<std::string> files{"former"};
    config().GetCRLFileList(files, m_dir.File("lists"));
    EXPECT_EQ("former", files.front());
    EXPECT_THAT(files, UnorderedElementsAre("former", "x.crl.bak", "X.CRL", "folder.crl"));
}

TEST_F(SslCertificates, NoDirectoryNoLists) {
    std::vector<std::string> files{"former"};
    for (const std::string& directory : {std::string(), m_dir.File("none"), m_agent.key}) {
        config().GetCRLFileList(files, directory);
        EXPECT_THAT(files, ElementsAre("former")) << directory;
    }
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SslCertificates, FilesAreReadAsPem) {
    X509* certificate = nullptr;
    config().GetX509Ptr(certificate, m_agent.certificate);
    ASSERT_NE(nullptr, certificate);
    EXPECT_EQ(0, X509_cmp(m_agent.identity.certificate.get(), certificate));
    X509_free(certificate);
    X509_CRL* list = nullptr;
    config().GetX509CRLPtr(list, WriteList("a.crl", {m_other}));
    ASSERT_NE(nullptr, list);
    X509_CRL_free(list);
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SslCertificates, AnEmptyFileNameGivesNullInSilence) {
    X509* certificate = m_agent.identity.certificate.get();
    config().GetX509Ptr(certificate, "");
    EXPECT_EQ(nullptr, certificate);
    X509_CRL* list = reinterpret_cast<X509_CRL*>(this);
    config().GetX509CRLPtr(list, "");
    EXPECT_EQ(nullptr, list);
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SslCertificates, AMissingFileIsLogged) {
    X509* certificate = nullptr;
    config().GetX509Ptr(certificate, m_dir.File("none.pem"));
    EXPECT_EQ(nullptr, certificate);
    ExpectLog(kDebug, 1, kSource, "[CorbaBaseAgentConfig::verifyNBICert]: open file error");
    X509_CRL* list = nullptr;
    config().GetX509CRLPtr(list, m_dir.File("none.crl"));
    EXPECT_EQ(nullptr, list);
    ExpectLog(kDebug, 1, kSource,
              "[CorbaBaseAgentConfig::verifyNBICert]: open file " + m_dir.File("none.crl") + " error",
              "open file %s error");
    EXPECT_EQ(2u, m_log->Entries().size());
}

TEST_F(SslCertificates, AFileThatHoldsNoneIsLogged) {
    const std::string garbage =
        m_dir.Write("garbage.pem", "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n");
    for (const std::string& file : {garbage, m_agent.key, m_dir.Write("empty.pem", ""), m_dir.str()}) {
        m_log->Clear();
        X509* certificate = m_agent.identity.certificate.get();
        config().GetX509Ptr(certificate, file);
        EXPECT_EQ(nullptr, certificate) << file;
        ExpectLog(kDebug, 1, kSource, "[CorbaBaseAgentConfig::verifyNBICert]: PEM_read_X509 file error");
        X509_CRL* list = nullptr;
        config().GetX509CRLPtr(list, file);
        EXPECT_EQ(nullptr, list) << file;
        ExpectLog(kDebug, 1, kSource,
                  "[CorbaBaseAgentConfig::verifyNBICert]: PEM_read_X509_CRL file " + file + " error",
                  "PEM_read_X509_CRL file %s error");
        EXPECT_EQ(2u, m_log->Entries().size());
    }
}

TEST_F(SslCertificates, AListThatDoesNotNameTheCertificatePassesInSilence) {
    EXPECT_TRUE(Passes(m_agent, WriteList("a.crl", {m_other})));
    EXPECT_TRUE(Passes(m_agent, WriteList("a.crl", {})));
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(SslCertificates, AListThatNamesTheCertificateRevokesIt) {
    EXPECT_FALSE(Passes(m_agent, WriteList("a.crl", {m_other, m_agent})));
    EXPECT_THAT(Texts(kSys), ElementsAre(VerifyFailed(X509_V_ERR_CERT_REVOKED)));
    ExpectLog(kSys, -1, kSource, VerifyFailed(23), kVerifySnippet);
    const std::string revoked = "[CorbaBaseAgentConfig::verifyNBICertCRL]: CORBA CERT REVOKED CheckRes:23";
    ExpectLog(kDebug, 1, kSource, revoked, "CORBA CERT REVOKED");
    EXPECT_THAT(m_log->Entries().back().text, revoked);
}

TEST_F(SslCertificates, AnExpiredListRevokesNothing) {
    EXPECT_TRUE(Passes(m_agent, WriteList("a.crl", {m_agent}, Holds::kNoMore)));
    ExpectVerifyFailed(X509_V_ERR_CRL_HAS_EXPIRED);
}

TEST_F(SslCertificates, AListOfTheFutureRevokesNothing) {
    EXPECT_TRUE(Passes(m_agent, WriteList("a.crl", {m_agent}, Holds::kNotYet)));
    ExpectVerifyFailed(X509_V_ERR_CRL_NOT_YET_VALID);
}

TEST_F(SslCertificates, AListOfAnotherIssuerRevokesNothing) {
    const TestAuthority stranger(m_dir, "stranger");
    EXPECT_TRUE(Passes(m_agent, stranger.WriteRevocationList("s.crl", {m_agent})));
    ExpectVerifyFailed(X509_V_ERR_UNABLE_TO_GET_CRL);
}

TEST_F(SslCertificates, AListOfAnIssuerOfTheSameNameRevokesNothing) {
    const TempDir elsewhere;
    const TestAuthority impostor(elsewhere, "authority");
    EXPECT_TRUE(Passes(m_agent, impostor.WriteRevocationList("i.crl", {m_agent})));
    EXPECT_EQ(1, static_cast<int>(Texts(kSys).size()));
    EXPECT_THAT(Texts(kSys).front(), HasSubstr("verify cer error"));
}

TEST_F(SslCertificates, AnExpiredCertificateIsNotARevokedOne) {
    const IssuedFiles expired = m_authority.Issue("expired", "", Holds::kNoMore);
    const IssuedFiles early = m_authority.Issue("early", "", Holds::kNotYet);
    const std::string list = WriteList("a.crl", {});
    EXPECT_TRUE(Passes(expired, list));
    ExpectVerifyFailed(X509_V_ERR_CERT_HAS_EXPIRED);
    m_log->Clear();
    EXPECT_TRUE(Passes(early, list));
    ExpectVerifyFailed(X509_V_ERR_CERT_NOT_YET_VALID);
    m_log->Clear();
    EXPECT_FALSE(Passes(expired, WriteList("a.crl", {expired}))) << "an expired one may be revoked, too";
}

TEST_F(SslCertificates, ACertificateOfAnotherAuthorityPassesWithALogLine) {
    const TestAuthority stranger(m_dir, "stranger");
    IssuedFiles foreign = stranger.Issue("foreign");
    foreign.authorities = m_authority.File();
    EXPECT_TRUE(Passes(foreign, WriteList("a.crl", {foreign})));
    ExpectVerifyFailed(X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
}

TEST_F(SslCertificates, TheAuthorityStandsForItselfAlone) {
    const TestAuthority intermediate = m_authority.Intermediate("intermediate");
    IssuedFiles below = intermediate.Issue("below");
    const std::string list = intermediate.WriteRevocationList("i.crl", {below});
    EXPECT_TRUE(Passes(below, list)) << "the chain behind the certificate isn't read";
    ExpectVerifyFailed(X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
    m_log->Clear();
    below.authorities = intermediate.File();
    EXPECT_TRUE(Passes(below, list)) << "an authority that isn't its own issuer ends no chain";
    ExpectVerifyFailed(X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT);
}

TEST_F(SslCertificates, TheKeyDoesNotMatter) {
    const std::string list = WriteList("a.crl", {m_agent});
    fs::copy_file(m_other.key, m_agent.key, fs::copy_options::overwrite_existing);
    EXPECT_FALSE(Passes(m_agent, list));
    fs::remove(m_agent.key);
    EXPECT_FALSE(Passes(m_agent, list));
}

TEST_F(SslCertificates, WithAFileMissingNothingIsRevoked) {
    const std::string list = WriteList("a.crl", {m_agent});
    for (const std::string& bad : {std::string(), m_dir.File("none"), m_dir.Write("garbage", "PEM?")}) {
        EXPECT_TRUE(config().verifyNBICertCRL(bad, m_agent.certificate, list)) << bad;
        EXPECT_TRUE(config().verifyNBICertCRL(m_agent.authorities, bad, list)) << bad;
        EXPECT_TRUE(config().verifyNBICertCRL(m_agent.authorities, m_agent.certificate, bad)) << bad;
    }
    EXPECT_EQ(6u, m_log->Entries(kDebug).size()) << "one line for each file that was named";
    EXPECT_THAT(Texts(kSys), IsEmpty());
}

TEST_F(SslCertificates, FilesAreReadInOrderUntilOneIsMissing) {
    const std::string none = m_dir.File("none.crl");
    config().verifyNBICertCRL(m_dir.File("none"), m_dir.File("none"), none);
    EXPECT_THAT(Texts(kDebug), ElementsAre("[CorbaBaseAgentConfig::verifyNBICert]: open file error"));
    config().verifyNBICertCRL(m_agent.authorities, m_dir.File("none"), none);
    EXPECT_THAT(Texts(kDebug), ElementsAre("[CorbaBaseAgentConfig::verifyNBICert]: open file error",
                                           "[CorbaBaseAgentConfig::verifyNBICert]: open file error"));
}

TEST_F(SslCertificates, AVerificationThatCantBeginRevokesNothing) {
    const std::string list = WriteList("a.crl", {m_agent});
    {
        const FailingVerification failing(FailingVerification::kNoContext);
        EXPECT_TRUE(Passes(m_agent, list));
        EXPECT_TRUE(m_log->Entries().empty());
    }
    const FailingVerification failing(FailingVerification::kNoStart);
    EXPECT_TRUE(Passes(m_agent, list));
    ExpectLog(kDebug, 1, kSource, "[CorbaBaseAgentConfig::verifyNBICertCRL]: X509_STORE_CTX_init error 0",
              "X509_STORE_CTX_init error");
    EXPECT_EQ(1u, m_log->Entries().size());
}

}  // namespace
}  // namespace qv_test
