#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "tests/unit/agent/ssl_fixture.h"
#include "tools/ssl/agent_view.h"

namespace qv_test {
namespace {

using ::testing::IsEmpty;

namespace fs = std::filesystem;

TEST_F(SslCertificates, NothingIsKnownAtFirst) {
    EXPECT_EQ("", config().GetNBISSLPrivateKey() + config().GetNBISSLCertificate() +
                      config().GetNBISSLCAfile() + config().GetNBISSLPrivateKeyPasswd() +
                      config().GetNBISSLCRL());
    EXPECT_TRUE(config().GetNBISSLCRLCheckStatus());
}

TEST_F(SslCertificates, TheProfileTellsTheFiles) {
    ReadProfileOf(m_agent);
    EXPECT_EQ(m_agent.key, config().GetNBISSLPrivateKey());
    EXPECT_EQ(m_agent.certificate, config().GetNBISSLCertificate());
    EXPECT_EQ(m_authority.File(), config().GetNBISSLCAfile());
    EXPECT_EQ(kPassPhrase, config().GetNBISSLPrivateKeyPasswd());
    EXPECT_EQ(Lists(), config().GetNBISSLCRL());
    EXPECT_THAT(Texts(kDebug), IsEmpty());
}

TEST_F(SslCertificates, AValueGoesToTheEndOfItsLine) {
    ReadProfile(
        "x -SSLPrivateKey  PEM:/a key.pem -SSLCertificate PEM:/b.pem \\\n-SSLCAfile PEM:/c.pem\"\r\n");
    EXPECT_EQ("/a key.pem -SSLCertificate PEM:/b.pem \\", config().GetNBISSLPrivateKey());
    EXPECT_EQ("", config().GetNBISSLCertificate()) << "the first word of a line counts alone";
    EXPECT_EQ("/c.pem\"\r", config().GetNBISSLCAfile());
}

TEST_F(SslCertificates, WordsAreTriedInTheirOrder) {
    ReadProfile("-SSLCAfile PEM:/1 -SSLPrivateKeyPasswd PEM:2\n");
    EXPECT_EQ("PEM:2", config().GetNBISSLPrivateKeyPasswd());
    EXPECT_EQ("", config().GetNBISSLPrivateKey() + config().GetNBISSLCAfile());
    ReadProfile("-SSLCAfile PEM:/1 -SSLCertificate PEM:/3\n");
    EXPECT_EQ("/1 -SSLCertificate PEM:/3", config().GetNBISSLCertificate());
    EXPECT_EQ("", config().GetNBISSLCAfile());
}

TEST_F(SslCertificates, AWordWithoutAMarkerEmptiesTheValue) {
    ReadProfileOf(m_agent);
    ReadProfile("-SSLPrivateKeyPasswd\n-SSLPrivateKey ASN1:/k.der\n-SSLCertificate\n-SSLCAfile /ca.pem\n");
    EXPECT_EQ("", config().GetNBISSLPrivateKeyPasswd() + config().GetNBISSLPrivateKey() +
                      config().GetNBISSLCertificate() + config().GetNBISSLCAfile());
}

TEST_F(SslCertificates, TheLastOfEqualWordsCountsAlsoWithoutALineEnd) {
    ReadProfile("-SSLCAfile PEM:/first\n\n# -SSLCAfile PEM:/second\n-SSLCAfile PEM:/third");
    EXPECT_EQ("/third", config().GetNBISSLCAfile());
    ReadProfile("-SSLCAfile PEM:/first\n# -SSLCAfile PEM:/second\n");
    EXPECT_EQ("/second", config().GetNBISSLCAfile()) << "a comment is a line like any other";
}

TEST_F(SslCertificates, AnEmptyProfileTellsTheDirectoryOfTheListsOnly) {
    ReadProfile("");
    EXPECT_EQ(Lists(), config().GetNBISSLCRL());
    EXPECT_EQ("", config().GetNBISSLCAfile());
    EXPECT_THAT(Texts(kDebug), IsEmpty());
}

TEST_F(SslCertificates, WithoutTheShareDirectoryTheListsAreThoseOfTheSystem) {
    const ScopedEnv none("_APP_SHARE_DIR", std::nullopt);
    ReadProfileOf(m_agent);
    EXPECT_EQ("/etc/ssl/nbi/crl/", config().GetNBISSLCRL());
}

TEST_F(SslCertificates, ALinkToTheProfileIsFollowed) {
    fs::create_symlink(WriteProfile(m_dir, "real.conf", m_agent), m_dir.File("link.conf"));
    Probe::SSLProfile() = m_dir.File("link.conf");
    config().GetNBISSLCertificateInfo();
    EXPECT_EQ(m_agent.key, config().GetNBISSLPrivateKey());
}

TEST_F(SslCertificates, AProfileThatCantBeOpenedChangesNothing) {
    for (const std::string& profile : {std::string(), m_dir.File("none.conf")}) {
        Probe::SSLProfile() = profile;
        m_log->Clear();
        config().GetNBISSLCertificateInfo();
        ExpectLog(kDebug, 1, kSource, "[CorbaBaseAgentConfig::GetNBISSLCertificateInfo]: open file error");
        EXPECT_EQ(1u, m_log->Entries().size());
        EXPECT_EQ("", config().GetNBISSLCRL());
    }
    ReadProfileOf(m_agent);
    Probe::SSLProfile().clear();
    config().GetNBISSLCertificateInfo();
    EXPECT_EQ(m_agent.key, config().GetNBISSLPrivateKey()) << "what was known stays";
}

TEST_F(SslCertificates, ALineOfFiveHundredAndElevenIsTheLongest) {
    const std::string path = "/" + std::string(495, 'p');
    const std::string line = "-SSLCAfile PEM:" + path;
    ASSERT_EQ(511u, line.size());
    ReadProfile(line + "\n-SSLCertificate PEM:/behind\n");
    EXPECT_EQ(path, config().GetNBISSLCAfile());
    EXPECT_EQ("/behind", config().GetNBISSLCertificate());
    ReadProfile(line);
    EXPECT_EQ(path, config().GetNBISSLCAfile());
}

/// qv_ssl tells operators what the agent reads; it has to be right.
TEST_F(SslCertificates, TheCheckCommandReadsAsTheAgentDoes) {
    const std::string longest = "-SSLCAfile PEM:" + std::string(496, 'a');
    for (const std::string& text :
         {ProfileText(OptionsFor(m_agent)), std::string(), std::string("-SSLCAfile"),
          std::string("\n\r\n-SSLCAfile PEM:/a\r\n-SSLCertificate PEM: /b \n"),
          std::string(
              "-SSLPrivateKeyPasswd  two words -SSLPrivateKey PEM:/k\n-SSLPrivateKey -SSLCAfile PEM:PEM:/k"),
          std::string("# -SSLPrivateKeyPasswdx\n-SSLPrivateKeyPasswd\ty\n-SSLCertificates PEM:/c\n"),
          std::string("-SSLCertificate PEM:/one\n-SSLCertificate\n"), longest, longest + "\n"}) {
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        ReadProfile(text);
        const qv_tools::AgentView view = qv_tools::ViewOfAgent(text);
        EXPECT_EQ(config().GetNBISSLPrivateKeyPasswd(), view.pass_phrase) << text;
        EXPECT_EQ(config().GetNBISSLPrivateKey(), view.private_key_file) << text;
        EXPECT_EQ(config().GetNBISSLCertificate(), view.certificate_file) << text;
        EXPECT_EQ(config().GetNBISSLCAfile(), view.authority_file) << text;
        EXPECT_EQ(0u, view.endless_line) << text;
    }
    EXPECT_EQ(1u, qv_tools::ViewOfAgent(longest + "a").endless_line);
}

/// Ends the process when it has used a second of processor time, and in any case after half a minute.
void LimitProcess() {
    const rlimit cpu{1, 2};
    setrlimit(RLIMIT_CPU, &cpu);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    alarm(30);
}

TEST_F(SslCertificates, ALongerLineIsNeverGotPast) {
    const auto readWithin = [&](std::size_t size) {
        LimitProcess();
        ReadProfile(std::string(size, 'x') + "\n-SSLCertificate PEM:/behind\n");
        _exit(config().GetNBISSLCertificate() == "/behind" ? 0 : 1);
    };
    EXPECT_EXIT(readWithin(511), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(readWithin(512), ::testing::KilledBySignal(SIGXCPU), "");
}

}  // namespace
}  // namespace qv_test
