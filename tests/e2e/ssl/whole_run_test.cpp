// The agent and its OSSs by SSL: who is served, who is turned away, and what the agent's logs say of it.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/events/companions.h"
#include "tests/e2e/ssl/ssl_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kUsage = 2;
constexpr int kNamingUnreachable = 3;
constexpr int kEmsUnreachable = 5;
constexpr int kNoPermission = 8;

class SslRunTest : public testing::Test {
  protected:
    /// The agent and the naming service alone; the agent writes its factory's reference to a file.
    void Start() {
        run.Set("CORBAAgent_Option", "\"-out " + run.dir().Write("factory.ior", "") + "\"");
        run.StartNaming();
        run.StartAgent();
    }
    /// What comes of a login straight at the agent by a client with this service configuration file.
    qv_test::RunResult LogIn(const std::string& profile) {
        run.SetOssProfile(profile);
        return run.Deployment::Oss({"--ior", run.dir().File("factory.ior"), "login"});
    }
    /// That login fails, the agent's log says why, and others are served.
    void ExpectRefused(const std::string& profile, const std::string& reason) {
        const auto refused = LogIn(profile);
        EXPECT_EQ(refused.code, kEmsUnreachable) << refused.err;
        EXPECT_TRUE(run.WaitForLog("corbadebug.log", {reason})) << run.agent().Err();
        const auto served = LogIn(run.oss_profile());
        EXPECT_EQ(served.code, 0) << served.err;
    }

    const qv_test::TempDir elsewhere;
    SslRun run;
};

TEST_F(SslRunTest, AnOssFindsTheAgentLogsInAndReads) {
    Start();
    const auto session = run.Deployment::Oss({"session"});
    EXPECT_EQ(session.code, 0) << session.err;
    EXPECT_THAT(session.out, HasSubstr("300 elements in 3 replies"));
}

TEST_F(SslRunTest, EventsAndLossesComeToAnOss) {
    run.StartAll();
    const auto oss = run.Listen({"--types", kAllButHeartbeats});
    run.Raise(50, 200);
    EXPECT_TRUE(qv_test::WaitFor([&] { return ShownIds(*oss).size() >= 50; })) << oss->Out() << oss->Err();
    run.KillNotify();
    run.Raise(5, 100);
    EXPECT_TRUE(oss->WaitForOut("-- the EMS can't send events since ")) << oss->Out();
    run.StartNotify();
    EXPECT_TRUE(oss->WaitForOut("-- the EMS sends events again since ")) << oss->Out();
    EXPECT_TRUE(qv_test::WaitFor([&] { return ShownIds(*oss).size() >= 55; })) << oss->Out();
}

TEST_F(SslRunTest, TheAgentStartsItsServicesBySsl) {
    const Companions companions(run);
    run.StartAgent();
    const auto oss = run.Listen({"--types", kAllButHeartbeats, "--count", "5"});
    run.Raise(5, 50);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
    EXPECT_EQ(ShownIds(*oss), run.RaisedIds(IsNoHeartbeat));
    run.SetOssProfile("");
    EXPECT_EQ(run.Deployment::Oss({"browse"}).code, kNoPermission);
    run.agent().Signal(SIGTERM);
    EXPECT_EQ(run.agent().Wait(), 0) << run.agent().Err();
}

TEST_F(SslRunTest, AClientOfAnotherAuthorityIsTurnedAway) {
    Start();
    const qv_test::TestAuthority other(elsewhere, "other");
    ExpectRefused(run.ProfileOf("stranger.conf", other.Issue("stranger")),
                  "authority that is not known here");
}

TEST_F(SslRunTest, AClientWithoutACertificateIsTurnedAway) {
    Start();
    qv_tools::ProfileOptions options;
    options.authenticate = "SERVER_AND_CLIENT";
    options.authorities = run.authority().File();
    ExpectRefused(qv_test::WriteProfile(elsewhere, "nameless.conf", options), "shows no certificate");
}

TEST_F(SslRunTest, AClientThatDoesNotTrustTheAgentSaysSo) {
    Start();
    const qv_test::TestAuthority other(elsewhere, "other");
    qv_tools::ProfileOptions options = qv_test::OptionsFor(run.authority().Issue("wary"));
    options.authorities = other.File();
    const auto result = LogIn(qv_test::WriteProfile(elsewhere, "wary.conf", options));
    EXPECT_EQ(result.code, kEmsUnreachable);
    EXPECT_THAT(result.err, HasSubstr("authority that is not known here"));
}

TEST_F(SslRunTest, ACallInClearGetsNoPermission) {
    Start();
    const auto refused = LogIn("");
    EXPECT_EQ(refused.code, kNoPermission) << refused.err;
    EXPECT_TRUE(run.WaitForLog("corbadebug.log", {"sent a request in clear to the plain port"}));
    const auto naming = run.Deployment::Oss({"browse"});
    EXPECT_EQ(naming.code, kNoPermission) << naming.err;
    EXPECT_THAT(naming.err, HasSubstr("--ssl-profile"));
}

TEST_F(SslRunTest, TheOthersPortIsNotTheRightOne) {
    Start();
    const std::string host = std::string(Deployment::kHost) + ":";
    const auto tls_to_plain =
        run.Deployment::Oss({"--naming", host + std::to_string(run.naming_port()), "browse"});
    EXPECT_EQ(tls_to_plain.code, kNamingUnreachable) << tls_to_plain.err;
    EXPECT_THAT(tls_to_plain.err, HasSubstr("can't be reached"));
    run.SetOssProfile("");
    const auto plain_to_tls =
        run.Deployment::Oss({"--naming", host + std::to_string(run.naming_ssl_port()), "browse"});
    EXPECT_EQ(plain_to_tls.code, kNamingUnreachable) << plain_to_tls.err;
    EXPECT_THAT(plain_to_tls.err, HasSubstr("can't be reached"));
}

TEST_F(SslRunTest, WhatCantBeUsedEndsTheStartWithTheReason) {
    const qv_test::IssuedFiles files = run.authority().Issue("locked", "right");
    qv_tools::ProfileOptions options = qv_test::OptionsFor(files);
    options.pass_phrase = "not-the-right-one";
    const std::string profile = qv_test::WriteProfile(elsewhere, "wrong.conf", options);
    const std::string reason = "SSL can't be set up: the private key file " + files.key +
                               " can't be used: the pass phrase of -SSLPrivateKeyPasswd does not open it\n";
    run.Set("SSL_Profile", "\"" + profile + "\"");
    qv_test::ChildProcess& agent = run.LaunchAgent();
    EXPECT_EQ(agent.Wait(), 1);
    EXPECT_THAT(agent.Err(), AllOf(HasSubstr(reason), Not(HasSubstr("not-the-right-one"))));
    run.SetOssProfile(profile);
    const auto oss = run.Deployment::Oss({"browse"});
    EXPECT_EQ(oss.code, kUsage);
    EXPECT_THAT(oss.err, AllOf(HasSubstr(reason), HasSubstr("--ssl-profile can't be used")));
}

TEST_F(SslRunTest, ThePassPhraseIsInNoLog) {
    run.SetPlatform("call_chain", "true");
    Start();
    EXPECT_EQ(LogIn(run.oss_profile()).code, 0);
    for (const char* log : {"corbadebug.log", "corbasys.log"}) {
        EXPECT_THAT(run.Log(log),
                    AllOf(Not(HasSubstr(SslRun::kPassPhrase)), Not(HasSubstr(Deployment::kPassword))));
    }
    EXPECT_THAT(run.agent().Err() + run.agent().Out(), Not(HasSubstr(SslRun::kPassPhrase)));
}

}  // namespace
}  // namespace qv_e2e
