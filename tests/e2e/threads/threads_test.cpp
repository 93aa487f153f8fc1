// The agent with each size of its thread pool, and without one.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

struct Case {
    const char* name;
    const char* key;
    const char* value;
    int pool_threads;
};

void PrintTo(const Case& one, std::ostream* out) {
    *out << one.key << " = " << one.value;
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class Threads : public testing::TestWithParam<Case> {
  protected:
    void SetUp() override {
        deployment.Set(GetParam().key, GetParam().value);
        deployment.Set("MaxSessionOfFIFO", "20");
        deployment.StartNaming();
        deployment.StartAgent();
    }

    Deployment deployment;
};

TEST_P(Threads, ThePoolHasTheConfiguredSize) {
    const auto expected = static_cast<std::size_t>(GetParam().pool_threads);
    EXPECT_TRUE(
        qv_test::WaitFor([&] { return Count(deployment.Log("corbasys.log"), " ORB is runing!") == expected; },
                         expected == 0 ? std::chrono::milliseconds(100) : std::chrono::milliseconds(30000)))
        << deployment.Log("corbasys.log");
}

TEST_P(Threads, SeveralSessionsAtOnceAreServed) {
    std::vector<std::unique_ptr<qv_test::ChildProcess>> crowd;
    for (int i = 0; i < 8; ++i) {
        crowd.push_back(deployment.StartOss({"session", "--timeout", "60"}));
    }
    for (const auto& oss : crowd) {
        EXPECT_EQ(oss->Wait(), 0) << oss->Err();
        EXPECT_THAT(oss->Out(), testing::HasSubstr("300 elements"));
    }
}

TEST_P(Threads, HandshakesAreAnsweredWhileRequestsAreServed) {
    deployment.KillAgent();
    deployment.Set("ShakeHandWithOSS", "true");
    deployment.StartAgent();
    const auto oss = deployment.HoldSession(2500);
    EXPECT_EQ(deployment.Oss({"session"}).code, 0);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err() << deployment.agent().Out();
}

TEST_P(Threads, TheAgentStopsCleanly) {
    ASSERT_EQ(deployment.Oss({"login"}).code, 0);
    deployment.agent().Signal(SIGTERM);
    EXPECT_EQ(deployment.agent().Wait(), 0) << deployment.agent().Err();
    EXPECT_THAT(deployment.agent().Out(), testing::HasSubstr("\nstopped\n"));
}

INSTANTIATE_TEST_SUITE_P(Sizes, Threads,
                         testing::Values(Case{"Zero", "ORBThreadNum", "0", 4},
                                         Case{"One", "ORBThreadNum", "1", 1},
                                         Case{"Four", "ORBThreadNum", "4", 4},
                                         Case{"NoPool", "ORBThreadPoolEnable", "false", 0}),
                         [](const auto& param) { return param.param.name; });

}  // namespace
}  // namespace qv_e2e
