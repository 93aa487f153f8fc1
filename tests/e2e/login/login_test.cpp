// Who gets a session, for how long, and what a session may hold.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr char kNoAnswer[] = "(the OSS does not answer)";

class Login : public testing::Test {
  protected:
    void Start() {
        deployment.StartNaming();
        deployment.StartAgent();
    }

    Deployment deployment;
};

TEST_F(Login, AWrongPasswordAndAnUnknownUserLookAlike) {
    Start();
    const auto wrong = deployment.Oss({"login"}, "wrong");
    EXPECT_EQ(wrong.code, 6);
    const auto unknown = deployment.Oss({"login", "--user", "nobody"});
    EXPECT_EQ(unknown.code, 6);
    EXPECT_EQ(wrong.err, unknown.err);
    EXPECT_THAT(wrong.err, HasSubstr("user or password is wrong"));
    EXPECT_EQ(deployment.Oss({"login"}, "").code, 6);
    EXPECT_THAT(deployment.agent().Out(), HasSubstr("refused oss from 127.0.0."));
}

TEST_F(Login, ANameThatCouldForgeLogLinesIsNotRepeated) {
    Start();
    EXPECT_EQ(deployment.Oss({"login", "--user", "x\nready</USERNAME_TAG>"}).code, 6);
    EXPECT_THAT(deployment.agent().Out(), HasSubstr("refused (a name that no user can have) from"));
    EXPECT_THAT(deployment.agent().Out(), testing::Not(HasSubstr("USERNAME_TAG")));
}

TEST_F(Login, ThePasswordComesFromAFileOrFromStandardInputButMustComeFromSomewhere) {
    Start();
    const std::string file =
        deployment.dir().Write("password", std::string(Deployment::kPassword) + "\nsecond line\n");
    EXPECT_EQ(deployment.Oss({"login", "--password-file", file}, nullptr).code, 0);
    EXPECT_EQ(deployment.Oss({"login", "--password-file", file + ".missing"}, nullptr).code, 2);
}

TEST_F(Login, TheNewcomerIsRefusedWhereTheLimitIsReached) {
    deployment.Set("MaxSessionOfFIFO", "1");
    deployment.Set("StrategyOfReleasingSession", "0");
    Start();
    const auto first = deployment.HoldSession(60000);
    const auto second = deployment.Oss({"login"});
    EXPECT_EQ(second.code, 7);
    EXPECT_THAT(second.err, HasSubstr("session limit reached"));
    EXPECT_TRUE(first->Running());
}

TEST_F(Login, TheOldestSessionMakesRoomWhereThatIsTheStrategy) {
    deployment.Set("MaxSessionOfFIFO", "1");
    deployment.Set("StrategyOfReleasingSession", "1");
    Start();
    const auto first = deployment.HoldSession(6000);
    const auto second = deployment.Oss({"login"});
    EXPECT_EQ(second.code, 0) << second.err;
    ASSERT_TRUE(first->Running()) << "the second one came too late to mean anything";
    EXPECT_EQ(first->Wait(), 10);
    EXPECT_THAT(first->Err(), HasSubstr("the EMS has ended the session"));
}

TEST_F(Login, ASilentSessionEnds) {
    deployment.Set("MaxIntervalOfSilentTime", "1");
    Start();
    const auto silent = deployment.HoldSession(60000);
    EXPECT_TRUE(deployment.agent().WaitForOut("(silent for too long)"));
    EXPECT_TRUE(silent->Running());
}

TEST_F(Login, TheSessionOfAnOssThatVanishedEnds) {
    deployment.Set("ShakeHandWithOSS", "true");
    Start();
    {
        const auto vanishing = deployment.HoldSession(60000);
        vanishing->Kill();
    }
    EXPECT_TRUE(deployment.agent().WaitForOut(kNoAnswer));
    EXPECT_EQ(deployment.Oss({"login"}).code, 0);
}

TEST_F(Login, AnOssThatStandsStillDoesNotKeepTheSessionsOfOthers) {
    deployment.Set("ShakeHandWithOSS", "true");
    Start();
    const auto frozen = deployment.HoldSession(60000);
    frozen->Signal(SIGSTOP);
    deployment.HoldSession(60000)->Kill();
    const auto ended = [&] {
        const std::string said = deployment.agent().Out();
        const auto first = said.find(kNoAnswer);
        return first != std::string::npos && said.find(kNoAnswer, first + 1) != std::string::npos;
    };
    EXPECT_TRUE(qv_test::WaitFor(ended, 60s)) << deployment.agent().Out();
}

TEST_F(Login, AnOssThatAnswersIsNotTakenForVanished) {
    deployment.Set("ShakeHandWithOSS", "true");
    Start();
    const auto oss = deployment.HoldSession(4500);  // long enough for four handshakes
    EXPECT_EQ(oss->Wait(), 0) << oss->Err() << deployment.agent().Out();
}

TEST_F(Login, IteratorsAreLimited) {
    deployment.Set("IteratorRestriction", "0");
    Start();
    const auto paged = deployment.Oss({"list", "--page", "10"});
    EXPECT_EQ(paged.code, 1);
    EXPECT_THAT(paged.err, HasSubstr("too many open iterators"));
    EXPECT_EQ(deployment.Oss({"list", "--page", "300"}).code, 0) << "one page needs no iterator";
}

}  // namespace
}  // namespace qv_e2e
