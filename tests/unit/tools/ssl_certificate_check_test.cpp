#include <unistd.h>

#include "tests/unit/tools/ssl_check_fixture.h"

namespace qv_test {
namespace {

using qv_tools::Finding;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

namespace fs = std::filesystem;

class SslCertificateCheck : public SslCheckTest {};

TEST_F(SslCertificateCheck, FilesThatAreMissingAreNamed) {
    for (const std::string& file : {m_agent.certificate, m_agent.key, m_agent.authorities}) {
        fs::rename(file, file + ".away");
        const std::vector<Finding> troubles = Troubles(Check());
        ASSERT_FALSE(troubles.empty());
        EXPECT_EQ(file, troubles.front().file);
        EXPECT_THAT(troubles.front().text,
                    ::testing::HasSubstr("it can't be found: No such file or directory"));
        fs::rename(file + ".away", file);
    }
}

TEST_F(SslCertificateCheck, GarbageIsTold) {
    for (const auto& [file, check] :
         {std::pair(m_agent.certificate, "certificate"), std::pair(m_agent.key, "key"),
          std::pair(m_agent.authorities, "authority")}) {
        const std::string former = ReadFile(file);
        qv_tools::WriteFile(file, "no PEM\n", 0600);
        EXPECT_THAT(Troubles(Check()), Contains(Error(check, "can't be used: ")));
        qv_tools::WriteFile(file, former, 0600);
    }
    qv_tools::WriteFile(m_agent.certificate, "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n",
                        0644);
    EXPECT_THAT(Troubles(Check()), Contains(Error("certificate", "certificate 1 is damaged")));
}

TEST_F(SslCertificateCheck, AWrongPassPhraseIsTold) {
    m_options.pass_phrase = "another";
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("key", "the pass phrase of -SSLPrivateKeyPasswd does not open it")));
    m_options.pass_phrase.clear();
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("key", "it is encrypted and no -SSLPrivateKeyPasswd is given")));
}

TEST_F(SslCertificateCheck, AKeyOfAnotherCertificateIsTold) {
    m_options.key = m_authority.Issue("other", m_agent.pass_phrase).key;
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("key", "not that of the certificate in " + m_agent.certificate)));
}

TEST_F(SslCertificateCheck, APassPhraseForAKeyInClearIsTold) {
    m_options = OptionsFor(m_authority.Issue("plain"));
    EXPECT_THAT(Troubles(Check()), IsEmpty());
    m_options.pass_phrase = "needless";
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("key", "isn't encrypted")));
}

TEST_F(SslCertificateCheck, TheKeyIsForItsOwner) {
    SetMode(m_agent.key, 0640);
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("permissions", "mode 0640: its group may read")));
    SetMode(m_agent.key, 0644);
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("permissions", "mode 0644: every user")));
    EXPECT_EQ(m_agent.key, Troubles(Check()).front().file);
    SetMode(m_agent.key, 0400);
    EXPECT_THAT(Troubles(Check()), IsEmpty());
}

TEST_F(SslCertificateCheck, NobodyElseMayChangeACertificate) {
    SetMode(m_agent.authorities, 0666);
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("permissions", "mode 0666: others than its owner may change it")));
}

TEST_F(SslCertificateCheck, AFileOfAnotherUserIsWarnedOf) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    ASSERT_EQ(0, chown(m_agent.key.c_str(), 65534, getegid()));
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Warning("permissions", "it belongs to another user, with the id 65534")));
}

TEST_F(SslCertificateCheck, NobodyElseMayReplaceACertificate) {
    const std::string open = m_dir.File("open");
    fs::create_directory(open);
    m_options.authorities = open + "/authority.pem";
    fs::copy_file(m_agent.authorities, m_options.authorities);
    SetMode(open, 0777);
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("permissions", "may replace it, for " + open + " has mode 0777")));
    SetMode(open, 01777);
    EXPECT_THAT(Troubles(Check()), IsEmpty());
}

TEST_F(SslCertificateCheck, ACertificateOfAnotherAuthorityIsNotTrusted) {
    const TestAuthority stranger(m_dir, "stranger");
    m_options = OptionsFor(stranger.Issue("foreign"));
    m_options.authorities = m_authority.File();
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Error("chain", "peers won't trust it: unable to get local issuer certificate")));
}

TEST_F(SslCertificateCheck, AChainOfTwoLeadsToItsAuthority) {
    const IssuedFiles below = m_authority.Intermediate("intermediate").Issue("below");
    m_options = OptionsFor(below);
    EXPECT_THAT(Troubles(Check()), IsEmpty());
    const std::string both = ReadFile(below.certificate);
    const std::string end = "-----END CERTIFICATE-----\n";
    qv_tools::WriteFile(below.certificate, both.substr(0, both.find(end) + end.size()), 0644);
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("chain", "unable to get local issuer certificate")));
}

TEST_F(SslCertificateCheck, DaysAreCounted) {
    m_time.now += kDay / 2;
    const std::vector<Finding> all = Check();
    EXPECT_THAT(Troubles(all), IsEmpty());
    EXPECT_THAT(all,
                Contains(::testing::AllOf(Ok("validity", "CN = agent is valid for 99 more days, until 2"),
                                          ::testing::Field(&Finding::days_left, Optional(99)))));
}

TEST_F(SslCertificateCheck, ACertificateNearItsEndIsWarnedOf) {
    const std::time_t now = m_time.now;
    m_time.now = now + 69 * kDay;
    EXPECT_THAT(Troubles(Check()), IsEmpty());
    m_time.now = now + 70 * kDay + kDay / 2;
    const std::vector<Finding> troubles = Troubles(Check());
    EXPECT_THAT(troubles, ElementsAre(Warning("validity", "CN = agent is valid for 29 more days"),
                                      Warning("validity", "CN = authority is valid for 29 more days")));
    EXPECT_THAT(troubles.front().days_left, Optional(29));
    m_time.warn_days = 29;
    EXPECT_THAT(Troubles(Check()), IsEmpty());
}

TEST_F(SslCertificateCheck, ACertificatePastItsEndIsAnError) {
    m_options = OptionsFor(m_authority.Issue("old", "", Holds::kNoMore));
    const std::vector<Finding> troubles = Troubles(Check());
    EXPECT_THAT(troubles, ElementsAre(Error("validity", "CN = old expired on ")));
    EXPECT_THAT(troubles.front().days_left, Optional(::testing::AnyOf(-10, -11)));
}

TEST_F(SslCertificateCheck, ACertificateOfTheFutureIsAnError) {
    m_options = OptionsFor(m_authority.Issue("young", "", Holds::kNotYet));
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("validity", "CN = young isn't valid before ")));
}

TEST_F(SslCertificateCheck, AnAuthorityPastItsEndIsAnError) {
    const TestAuthority expired(m_dir, "gone", Holds::kNoMore);
    m_options = OptionsFor(expired.Issue("agent2"));
    EXPECT_THAT(Troubles(Check()), ElementsAre(Error("validity", "CN = gone expired on ")));
}

}  // namespace
}  // namespace qv_test
