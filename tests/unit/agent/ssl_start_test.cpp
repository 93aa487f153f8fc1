#include <algorithm>

#include "tests/support/free_port.h"
#include "tests/unit/agent/interposed.h"
#include "tests/unit/agent/open_watch.h"
#include "tests/unit/agent/ssl_fixture.h"

namespace qv_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

TEST_F(SslCertificates, WithoutSslNoListIsTouched) {
    WriteList("a.crl", {m_agent});
    ReadProfileOf(m_agent);
    OpenWatch watch({Lists(), Lists() + "a.crl", m_agent.certificate, m_agent.authorities});
    Probe::SSLMode() = 0;
    EXPECT_TRUE(config().CheckNBISSLCRL());
    EXPECT_EQ(0, watch.Opened());
    EXPECT_TRUE(m_log->Entries().empty());
    Probe::SSLMode() = 1;
    EXPECT_FALSE(config().CheckNBISSLCRL());
    EXPECT_GT(watch.Opened(), 0);
}

TEST_F(SslCertificates, EveryModeButZeroLooksAtTheLists) {
    WriteList("a.crl", {m_agent});
    ReadProfileOf(m_agent);
    for (const unsigned int mode : {1u, 2u, 4294967295u}) {
        Probe::SSLMode() = mode;
        EXPECT_FALSE(config().CheckNBISSLCRL()) << mode;
    }
}

TEST_F(SslCertificates, WithoutListsNothingIsRevoked) {
    ReadProfileOf(m_agent);
    EXPECT_TRUE(config().CheckNBISSLCRL());
    ExpectLog(kSys, -1, kSource, "CheckNBISSLCRL debug.");
    fs::remove_all(Lists());
    EXPECT_TRUE(config().CheckNBISSLCRL());
    EXPECT_THAT(Texts(kSys), ElementsAre("CheckNBISSLCRL debug.", "CheckNBISSLCRL debug."));
    EXPECT_THAT(Texts(kDebug), IsEmpty());
}

TEST_F(SslCertificates, WithoutAProfileNothingIsRevoked) {
    WriteList("a.crl", {m_agent});
    Probe::SSLMode() = 1;
    config().GetNBISSLCertificateInfo();
    EXPECT_EQ("", config().GetNBISSLCRL());
    EXPECT_TRUE(config().CheckNBISSLCRL());
    EXPECT_THAT(Texts(kDebug),
                ElementsAre("[CorbaBaseAgentConfig::GetNBISSLCertificateInfo]: open file error"));
    EXPECT_THAT(Texts(kSys), ElementsAre("CheckNBISSLCRL debug."));
}

TEST_F(SslCertificates, ListsAreReadUpToTheOneThatRevokes) {
    const std::vector<std::string> lists = ThreeLists();
    ASSERT_EQ(3u, lists.size());
    ReadProfileOf(m_agent);
    for (std::size_t revoking = 0; revoking < lists.size(); ++revoking) {
        for (const std::string& list : lists) {
            WriteList(list, {m_other});
        }
        WriteList(lists[revoking], {m_agent});
        std::vector<int> opened;
        for (const std::string& list : lists) {
            OpenWatch watch({Lists() + list});
            EXPECT_FALSE(config().CheckNBISSLCRL());
            opened.push_back(watch.Opened());
        }
        const std::vector<int> expected{1, revoking >= 1 ? 1 : 0, revoking >= 2 ? 1 : 0};
        EXPECT_EQ(expected, opened) << "list " << revoking + 1 << " revokes";
    }
    ExpectLog(kSys, -1, kSource, "CheckNBISSLCRL false.");
}

TEST_F(SslCertificates, ARevocationIsLoggedInThisOrder) {
    WriteList("a.crl", {m_agent});
    ReadProfileOf(m_agent);
    EXPECT_FALSE(config().CheckNBISSLCRL());
    std::vector<std::string> all;
    for (const LogEntry& entry : m_log->Entries()) {
        all.push_back(entry.text);
    }
    EXPECT_THAT(all, ElementsAre("CheckNBISSLCRL debug.", VerifyFailed(23),
                                 "[CorbaBaseAgentConfig::verifyNBICertCRL]: CORBA CERT REVOKED CheckRes:23",
                                 "CheckNBISSLCRL false."));
}

TEST_F(SslCertificates, UselessListsHideNoRevocation) {
    const TestAuthority stranger(m_dir, "stranger");
    m_dir.Write("share/etc/ssl/nbi/crl/garbage.crl", "-----BEGIN X509 CRL-----\n?\n-----END X509 CRL-----\n");
    m_dir.Write("share/etc/ssl/nbi/crl/empty.CRL", "");
    fs::create_directory(Lists() + "folder.crl");
    fs::create_symlink("nowhere", Lists() + "dangling.crl");
    stranger.WriteRevocationList("share/etc/ssl/nbi/crl/stranger.crl", {m_agent});
    WriteList("expired.crl", {m_agent}, Holds::kNoMore);
    WriteList("notcrl.txt", {m_agent});
    ReadProfileOf(m_agent);
    EXPECT_TRUE(config().CheckNBISSLCRL());
    for (const char* const odd : {"garbage.crl", "empty.CRL", "folder.crl"}) {
        EXPECT_EQ(1, CountLog(kDebug, "[CorbaBaseAgentConfig::verifyNBICert]: PEM_read_X509_CRL file " +
                                          Lists() + odd + " error"));
    }
    EXPECT_EQ(1, CountLog(kDebug, "[CorbaBaseAgentConfig::verifyNBICert]: open file " + Lists() +
                                      "dangling.crl error"));
    WriteList("z.crl.bak", {m_agent});
    EXPECT_FALSE(config().CheckNBISSLCRL());
}

/// A whole start, in a mode that looks at the lists while the ORB's own transport stays plain.
class SslStart : public SslCertificates {
  protected:
    SslStart() {
        m_items.Set("CORBAAgent_Port", std::to_string(FreePort()));
        m_items.Set("CORBAAgent_Host", "127.0.0.2");
        m_items.Set("SSLMode", "2");
        m_items.Set("SSL_Profile", WriteProfile(m_dir, "agent.conf", m_agent));
    }

    std::size_t PlaceOf(const std::string& channel, const std::string& head) {
        const std::vector<std::string> texts = Texts(channel);
        const auto found = std::find_if(texts.begin(), texts.end(), [&](const std::string& text) {
            return text.compare(0, head.size(), head) == 0;
        });
        EXPECT_NE(texts.end(), found) << head;
        return static_cast<std::size_t>(found - texts.begin());
    }

    ScopedEnv m_root{"QV_ENV_ROOT", m_dir.str()};
};

TEST_F(SslStart, SettingsEndWithTheProfile) {
    m_items.Set("SSL_Profile", "");
    ASSERT_TRUE(config().GetOption());
    EXPECT_EQ("[CorbaBaseAgentConfig::GetNBISSLCertificateInfo]: open file error", Texts(kDebug).back());
    EXPECT_EQ("", config().GetNBISSLCRL());
}

TEST_F(SslStart, SettingsReadTheProfileInEveryMode) {
    for (const char* const mode : {"0", "1", "2"}) {
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        m_items.Set("SSLMode", mode);
        ASSERT_TRUE(config().GetOption());
        EXPECT_EQ(m_agent.certificate, config().GetNBISSLCertificate()) << mode;
        EXPECT_EQ(Lists(), config().GetNBISSLCRL()) << mode;
    }
}

TEST_F(SslStart, ARevokedCertificateLeavesAFlagAndNoMore) {
    WriteList("a.crl", {m_agent});
    ASSERT_TRUE(config().Init("bundle"));
    EXPECT_FALSE(config().GetNBISSLCRLCheckStatus());
    EXPECT_FALSE(CORBA::is_nil(PortableServer::POA_var(config().GetRootPoa()).in()));
    const std::string revoked = "[CorbaBaseAgentConfig::Init]: CORBA SSL certificate was revoked\n";
    ExpectLog(kSys, -1, "corbabaseagentconfig", revoked);
    EXPECT_LT(PlaceOf(kSys, "CheckNBISSLCRL false."), PlaceOf(kSys, revoked));
    EXPECT_LT(PlaceOf(kSys, revoked), PlaceOf(kSys, "ORB init params:"));
}

TEST_F(SslStart, AGoodCertificateLeavesNone) {
    WriteList("a.crl", {m_other});
    ASSERT_TRUE(config().Init("bundle"));
    EXPECT_TRUE(config().GetNBISSLCRLCheckStatus());
    EXPECT_FALSE(m_log->Contains(kSys, "revoked"));
}

TEST_F(SslStart, ListsAreReadOnceOnly) {
    ASSERT_TRUE(config().Init("bundle"));
    WriteList("late.crl", {m_agent});
    EXPECT_TRUE(config().GetNBISSLCRLCheckStatus());
}

TEST_F(SslStart, ListsAreReadBeforeTheServicesStart) {
    WriteList("a.crl", {m_agent});
    m_items.Set("NamingService_AutoStart", "1");
    {
        const FailingFork failing;
        EXPECT_FALSE(config().Init("bundle"));
    }
    EXPECT_FALSE(config().GetNBISSLCRLCheckStatus());
    EXPECT_LT(PlaceOf(kSys, "[CorbaBaseAgentConfig::Init]: CORBA SSL certificate was revoked\n"),
              PlaceOf(kSys, "Corba Service[NamingService] auto starting..."));
}

TEST_F(SslStart, SettingsThatCantBeSplitEndTheStartBeforeTheLists) {
    WriteList("a.crl", {m_agent});
    const FailingSplit failing;
    EXPECT_FALSE(config().Init("bundle"));
    EXPECT_TRUE(config().GetNBISSLCRLCheckStatus());
    EXPECT_FALSE(m_log->Contains(kSys, "CheckNBISSLCRL"));
}

TEST_F(SslStart, ThePassPhraseIsInNoRecord) {
    WriteList("a.crl", {m_agent});
    m_dir.Write("share/etc/ssl/nbi/crl/garbage.crl", "?");
    ASSERT_TRUE(config().Init("bundle"));
    ASSERT_EQ(kPassPhrase, config().GetNBISSLPrivateKeyPasswd());
    ASSERT_FALSE(m_log->Entries().empty());
    for (const LogEntry& entry : m_log->Entries()) {
        EXPECT_THAT(entry.text, ::testing::Not(HasSubstr(kPassPhrase)));
    }
}

/// A start in which the ORB speaks SSL, too.
class SslOrbStart : public SslStart {
  protected:
    SslOrbStart() {
        m_items.Set("SSLMode", "1");
        m_items.Set("CORBAAgent_SSLPort", std::to_string(FreePort()));
    }

    void UseOptions(const qv_tools::ProfileOptions& options) { WriteProfile(m_dir, "agent.conf", options); }

    void ExpectNoStart() {
        EXPECT_FALSE(config().Init("bundle"));
        ExpectLog(kSys, -1, "corbabaseagentconfig", "Exception received during orb initializing!\n");
        for (const LogEntry& entry : m_log->Entries()) {
            EXPECT_THAT(entry.text, ::testing::Not(HasSubstr(kPassPhrase)));
        }
    }
};

TEST_F(SslOrbStart, ARevokedCertificateDoesNotStopTheOrb) {
    WriteList("a.crl", {m_agent});
    ASSERT_TRUE(config().Init("bundle"));
    EXPECT_FALSE(config().GetNBISSLCRLCheckStatus());
    EXPECT_FALSE(CORBA::is_nil(PortableServer::POA_var(config().GetRootPoa()).in()));
    for (const LogEntry& entry : m_log->Entries()) {
        EXPECT_THAT(entry.text, ::testing::Not(HasSubstr(kPassPhrase)));
    }
}

TEST_F(SslOrbStart, AWrongPassPhraseStopsTheOrb) {
    qv_tools::ProfileOptions options = OptionsFor(m_agent);
    options.pass_phrase = "wrong";
    UseOptions(options);
    ExpectNoStart();
}

TEST_F(SslOrbStart, AKeyOfAnotherCertificateStopsTheOrb) {
    qv_tools::ProfileOptions options = OptionsFor(m_agent);
    options.key = m_authority.Issue("third", kPassPhrase).key;
    UseOptions(options);
    ExpectNoStart();
}

TEST_F(SslOrbStart, AMissingCertificateStopsTheOrbAndRevokesNothing) {
    WriteList("a.crl", {m_agent});
    fs::remove(m_agent.certificate);
    ExpectNoStart();
    EXPECT_TRUE(config().GetNBISSLCRLCheckStatus());
}

}  // namespace
}  // namespace qv_test
