#include "tests/unit/tools/ssl_check_fixture.h"

namespace qv_test {
namespace {

using qv_tools::Finding;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

class SslRevocationCheck : public SslCheckTest {
  protected:
    std::string WriteFile(const std::string& name, const std::string& contents) {
        return m_dir.Write("share/etc/ssl/nbi/crl/" + name, contents);
    }
};

TEST_F(SslRevocationCheck, TheDirectoryIsThatOfTheAgent) {
    EXPECT_EQ("/opt/app/etc/ssl/nbi/crl/", qv_tools::RevocationListDirectory("/opt/app"));
    EXPECT_EQ("/etc/ssl/nbi/crl/", qv_tools::RevocationListDirectory(""));
}

TEST_F(SslRevocationCheck, WithoutListsThereIsNoTrouble) {
    EXPECT_THAT(Check(), Contains(Ok("revocation", "no revocation lists")));
    fs::create_directories(m_dir.File("share/etc/ssl/nbi/crl"));
    const std::vector<Finding> all = Check();
    EXPECT_THAT(all, Contains(Ok("revocation", "no revocation lists")));
    EXPECT_THAT(Troubles(all), IsEmpty());
}

TEST_F(SslRevocationCheck, AListTellsIssuerAndAge) {
    WriteList("a.crl", {m_authority.Issue("other")});
    m_time.now += 2 * kDay + kDay / 2;
    const std::vector<Finding> all = Check();
    EXPECT_THAT(Troubles(all), IsEmpty());
    EXPECT_THAT(all, Contains(Ok("revocation", "by CN = authority, 3 days old, next update in 97 days")));
}

TEST_F(SslRevocationCheck, ARevokedCertificateIsAnError) {
    WriteList("a.crl", {m_agent});
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("revocation", "the agent's certificate was revoked on ")));
}

TEST_F(SslRevocationCheck, AListPastItsNextUpdateIsAnError) {
    const std::string list = WriteList("a.crl", {m_agent}, Holds::kNoMore);
    const std::vector<Finding> troubles = Troubles(Check());
    EXPECT_THAT(troubles, ElementsAre(Error("revocation", "its next update was due on "),
                                      Error("revocation", "the agent's certificate was revoked on ")));
    EXPECT_EQ(list, troubles.front().file);
}

TEST_F(SslRevocationCheck, AListOfTheFutureIsAnError) {
    WriteList("a.crl", {}, Holds::kNotYet);
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("revocation", "is yet to come")));
}

TEST_F(SslRevocationCheck, AListOfAnotherIssuerHasNoEffect) {
    const TestAuthority stranger(m_dir, "stranger");
    stranger.WriteRevocationList("share/etc/ssl/nbi/crl/s.crl", {m_agent});
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("revocation", "by CN = stranger, who didn't issue")));
}

TEST_F(SslRevocationCheck, AListWithAWrongSignatureIsAnError) {
    const TempDir elsewhere;
    const TestAuthority impostor(elsewhere, "authority");
    WriteFile("i.crl", ReadFile(impostor.WriteRevocationList("i.crl", {m_agent})));
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("revocation", "it isn't signed by CN = authority")));
}

TEST_F(SslRevocationCheck, NamesDecideWhatIsRead) {
    for (const char* const name : {"x.crl.bak", "X.CRL"}) {
        WriteList(name, {});
    }
    WriteList("notcrl.txt", {m_agent});
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("revocation", "notcrl.txt isn't looked at")));
}

TEST_F(SslRevocationCheck, FilesThatHoldNoListAreErrors) {
    WriteFile("garbage.crl", "-----BEGIN X509 CRL-----\n?\n-----END X509 CRL-----\n");
    WriteFile("certificate.crl", ReadFile(m_agent.certificate));
    fs::create_directory(m_dir.File("share/etc/ssl/nbi/crl/folder.crl"));
    fs::create_symlink("nowhere", m_dir.File("share/etc/ssl/nbi/crl/dangling.crl"));
    EXPECT_THAT(
        Troubles(Check()),
        ElementsAre(Error("revocation", "it holds no revocation list in PEM form"),
                    Error("revocation", "it can't be found"), Error("revocation", "it is no regular file"),
                    Error("revocation", "it holds no revocation list in PEM form")));
}

TEST_F(SslRevocationCheck, OnlyTheFirstListOfAFileCounts) {
    const std::string list = ReadFile(WriteList("a.crl", {}));
    WriteFile("a.crl", list + list);
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("revocation", "its first list only")));
}

TEST_F(SslRevocationCheck, AnAgentBelowAnIntermediateAuthorityNoticesNothing) {
    const TestAuthority intermediate = m_authority.Intermediate("intermediate");
    const IssuedFiles below = intermediate.Issue("below");
    intermediate.WriteRevocationList("share/etc/ssl/nbi/crl/i.crl", {});
    m_options = OptionsFor(below);
    EXPECT_THAT(Troubles(Check()), Contains(Warning("revocation", "the agent can't notice a revocation")));
}

TEST_F(SslRevocationCheck, WithoutACertificateTheListsAreNamedAllTheSame) {
    WriteList("a.crl", {});
    fs::remove(m_agent.certificate);
    EXPECT_THAT(Check(), Contains(Ok("revocation", "by CN = authority")));
}

}  // namespace
}  // namespace qv_test
