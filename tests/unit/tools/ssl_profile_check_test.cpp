#include <unistd.h>

#include "tests/unit/tools/ssl_check_fixture.h"
#include "tools/ssl/agent_view.h"

namespace qv_test {
namespace {

using qv_tools::AgentView;
using qv_tools::Finding;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class SslProfileCheck : public SslCheckTest {
  protected:
    std::vector<Finding> CheckText(const std::string& text) {
        qv_tools::WriteFile(m_profile, text, 0600);
        return CheckProfileAsItIs();
    }
    std::string Directive(const std::string& options) {
        return "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory() \"" +
               options + "\"\nstatic Resource_Factory \"-ORBProtocolFactory SSLIOP_Factory\"\n";
    }
};

TEST_F(SslProfileCheck, ASoundSetUpHasNoTrouble) {
    WriteList("a.crl", {});
    const std::vector<Finding> all = Check();
    EXPECT_THAT(Troubles(all), IsEmpty());
    EXPECT_THAT(all, Contains(Ok("profile", "read the same")));
    EXPECT_THAT(all, Contains(Ok("option", "both sides")));
    EXPECT_THAT(all, Contains(Ok("start", "can set up SSL")));
}

TEST_F(SslProfileCheck, AMissingProfileIsTold) {
    const std::vector<Finding> all = CheckProfileAsItIs();
    EXPECT_THAT(Troubles(all), ElementsAre(Error("profile", "No such file or directory")));
    EXPECT_EQ(m_profile, Troubles(all).front().file);
}

TEST_F(SslProfileCheck, ADirectoryIsNoProfile) {
    m_profile = m_dir.str();
    EXPECT_THAT(Troubles(CheckProfileAsItIs()), ElementsAre(Error("profile", "no regular file")));
}

TEST_F(SslProfileCheck, AProfileThatCantBeReadIsTold) {
    WriteProfile(m_dir, "agent.conf", m_options);
    SetMode(m_profile, 0200);
    SetMode(m_dir.str(), 0755);
    const uid_t user = geteuid();
    if (user == 0) {
        ASSERT_EQ(0, seteuid(65534)) << "root may read everything";
    }
    const std::vector<Finding> all = CheckProfileAsItIs();
    ASSERT_EQ(0, seteuid(user));
    EXPECT_THAT(Troubles(all), ElementsAre(Error("profile", "Permission denied")));
}

TEST_F(SslProfileCheck, ThePassPhraseOfTheProfileIsForItsOwner) {
    WriteProfile(m_dir, "agent.conf", m_options);
    SetMode(m_profile, 0640);
    EXPECT_THAT(Troubles(CheckProfileAsItIs()),
                ElementsAre(Warning("permissions", "mode 0640: its group may read")));
    SetMode(m_profile, 0604);
    EXPECT_THAT(Troubles(CheckProfileAsItIs()), ElementsAre(Error("permissions", "mode 0604: every user")));
    SetMode(m_profile, 0620);
    EXPECT_THAT(Troubles(CheckProfileAsItIs()),
                ElementsAre(Error("permissions", "mode 0620: others than its owner may change")));
}

TEST_F(SslProfileCheck, WithoutAPassPhraseEverybodyMayReadTheProfile) {
    const IssuedFiles plain = m_authority.Issue("plain");
    WriteProfile(m_dir, "agent.conf", plain);
    SetMode(m_profile, 0644);
    EXPECT_THAT(Troubles(CheckProfileAsItIs()), IsEmpty());
}

TEST_F(SslProfileCheck, NoFindingShowsThePassPhrase) {
    for (const std::string& text :
         {ProfileText(m_options), Directive("-SSLPrivateKeyPasswd the-pass-phrase"),
          Directive("-SSLPassword the-pass-phrase -SSLPrivateKey"),
          Directive("the-pass-phrase -SSLPrivateKeyPasswd"),
          std::string("dynamic SSLIOP_Factory \"-SSLPrivateKeyPasswd the-pass-phrase")}) {
        m_options.pass_phrase = "the-pass-phrase";
        for (const Finding& finding : CheckText(text)) {
            EXPECT_THAT(finding.text + finding.advice, Not(HasSubstr("the-pass-phrase"))) << text;
        }
    }
}

TEST_F(SslProfileCheck, AFileWithoutTheFactoryMeansNoSsl) {
    EXPECT_THAT(Troubles(CheckText("static Resource_Factory \"-ORBProtocolFactory IIOP_Factory\"\n")),
                ElementsAre(Error("profile", "has no SSLIOP_Factory")));
}

TEST_F(SslProfileCheck, WhatTheOrbRefusesIsAnError) {
    const std::vector<Finding> all = Troubles(CheckText(Directive("-SSLAuthenticate SOMETIMES")));
    EXPECT_THAT(
        all, ElementsAre(Error("profile", "-SSLAuthenticate is NONE, SERVER, CLIENT or SERVER_AND_CLIENT")));
}

TEST_F(SslProfileCheck, OptionsThatDoNothingAreTold) {
    const std::string text = ProfileText(m_options);
    std::string odd = text;
    odd.insert(text.find("-SSLPrivateKeyPasswd"), "-SSLunknown x ");
    EXPECT_THAT(Troubles(CheckText(odd)), ElementsAre(Warning("option", "-SSLunknown is unknown")));
    odd = text;
    odd.insert(text.find("-SSLAuthenticate"), "-SSLunknown x ");
    EXPECT_THAT(Troubles(CheckText(odd)), ElementsAre(Warning("option", "an unknown SSL option in the line")));
}

TEST_F(SslProfileCheck, WeakSettingsAreTold) {
    m_options.authenticate = "NONE";
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("option", "nobody is asked")));
    m_options.authenticate = "SERVER";
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("option", "without a certificate")));
    m_options.authenticate = "CLIENT";
    EXPECT_THAT(Troubles(Check()), IsEmpty());
    m_options.no_protection = true;
    EXPECT_THAT(Troubles(Check()), ElementsAre(Warning("option", "requests in clear")));
}

TEST_F(SslProfileCheck, TheFactoryHasToBeNamed) {
    std::string text = ProfileText(m_options);
    text.erase(text.find("static Resource_Factory"),
               text.find("# The agent") - text.find("static Resource_Factory"));
    EXPECT_THAT(Troubles(CheckText(text)), ElementsAre(Warning("option", "no -ORBProtocolFactory")));
}

TEST_F(SslProfileCheck, OptionsOverSeveralLinesAreForThisOrbAlone) {
    const std::vector<Finding> all = Troubles(CheckText(Directive(
        "\n-SSLAuthenticate SERVER_AND_CLIENT\n-SSLPrivateKeyPasswd the-pass-phrase\n-SSLPrivateKey PEM:" +
        m_agent.key + "\n-SSLCertificate PEM:" + m_agent.certificate +
        "\n-SSLCAfile PEM:" + m_agent.authorities + "\n")));
    EXPECT_THAT(all, ElementsAre(Warning("profile", "go over several lines")));
}

TEST_F(SslProfileCheck, WhatTheAgentReadsInAnotherWayIsTold) {
    const std::string text = ProfileText(m_options);
    EXPECT_THAT(Troubles(CheckText(text.substr(0, text.find("# -SSL")))),
                Contains(Error("profile",
                               "reads -SSLPrivateKeyPasswd, -SSLPrivateKey, -SSLCertificate, -SSLCAfile in "
                               "another way than the ORB, and so would notice no revocation")));
    std::string later = text;
    later.replace(later.find("# -SSLPrivateKey PEM:"), 21, "# -SSLPrivateKey PEM:/other");
    EXPECT_THAT(Troubles(CheckText(later)),
                ElementsAre(Warning("profile", "reads -SSLPrivateKey in another way")));
}

TEST_F(SslProfileCheck, ALineThatTheAgentNeverGetsPastIsAnError) {
    EXPECT_THAT(Troubles(CheckText(ProfileText(m_options) + "# " + std::string(509, '-') + "\n")), IsEmpty());
    EXPECT_THAT(Troubles(CheckText(ProfileText(m_options) + "# " + std::string(510, '-') + "\n")),
                ElementsAre(Error("profile", "line 8 is longer than 511 characters")));
}

TEST_F(SslProfileCheck, OptionsThatBelongTogetherAreWantedTogether) {
    m_options.key.clear();
    EXPECT_THAT(Troubles(Check()), Contains(Error("option", "-SSLCertificate but no -SSLPrivateKey")));
    m_options.certificate.clear();
    EXPECT_THAT(Troubles(Check()), Contains(Error("option", "no -SSLCertificate and -SSLPrivateKey")));
    m_options = OptionsFor(m_agent);
    m_options.authorities.clear();
    EXPECT_THAT(Troubles(Check()), Contains(Error("option", "no -SSLCAfile")));
}

TEST_F(SslProfileCheck, AClientMayDoWithoutACertificate) {
    m_serves = false;
    EXPECT_THAT(Troubles(Check()), IsEmpty());
    m_options.key.clear();
    m_options.certificate.clear();
    m_options.pass_phrase.clear();
    EXPECT_THAT(Troubles(Check()),
                ElementsAre(Warning("option", "servers that ask for one refuse this client")));
}

TEST_F(SslProfileCheck, PathsAreToBeWhole) {
    m_options.authorities = "authority.pem";
    EXPECT_THAT(Troubles(Check()),
                Contains(Warning("option", "-SSLCAfile names authority.pem, which each process")));
}

TEST(AgentViewOfProfile, ValuesGoToTheEndOfTheLine) {
    const AgentView view = qv_tools::ViewOfAgent(
        "# -SSLPrivateKeyPasswd a b\n-SSLPrivateKey PEM:/k -SSLCertificate PEM:/c\n-SSLCAfile /a\nPEM:/none");
    EXPECT_EQ("a b", view.pass_phrase);
    EXPECT_EQ("/k -SSLCertificate PEM:/c", view.private_key_file);
    EXPECT_EQ("", view.certificate_file);
    EXPECT_EQ("", view.authority_file);
    EXPECT_EQ(0u, view.endless_line);
}

}  // namespace
}  // namespace qv_test
