// An OSS whose address the access list doesn't hold is turned away ahead of everything else.
#include <gmock/gmock.h>

#include "tests/e2e/harness/host_address.h"
#include "tests/e2e/harness/oss_in_process.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;
using testing::Not;

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class AccessListTest : public InterfaceTest {
  protected:
    void StartWithList(const std::string& host, const std::string& addresses) {
        deployment.Set("CORBAAgent_Host", "\"" + host + "\"");
        deployment.Set("bLogOperation", "true");
        SetList(addresses);
        SetClock(0);
        deployment.SetAgentEnvironment("LD_PRELOAD", QV_SHIFTED_CLOCK);
        deployment.SetAgentEnvironment("ASAN_OPTIONS", "verify_asan_link_order=0");
        deployment.SetAgentEnvironment("QV_TEST_CLOCK", deployment.dir().File("clock"));
        Start();
    }
    void SetList(const std::string& addresses) { deployment.SetPlatform("oss_addresses", addresses); }
    /// How many seconds the agent's clock is ahead.
    void SetClock(int seconds) { deployment.dir().Write("clock", std::to_string(seconds) + "\n"); }
};

TEST_F(AccessListTest, AStrangerIsTurnedAwayUntilTheListNamesIt) {
    const std::string own = HostAddress();
    if (own.empty()) {
        GTEST_SKIP() << "this host has no address but the loopback's, which is always let in";
    }
    StartWithList(own, "[\"192.0.2.250\"]");
    for (int i = 0; i < 5; ++i) {
        EXPECT_THROW(LogIn(), CORBA::NO_PERMISSION);
    }
    EXPECT_EQ(deployment.Oss({"login"}).code, 8);
    ASSERT_TRUE(deployment.agent().WaitForOut("is not in the access list"));
    EXPECT_TRUE(deployment.WaitForLog("corbadebug.log", {"is not in the access list"}));
    const std::string out = deployment.agent().Out();
    EXPECT_EQ(Count(out, "refused " + own + " is not in the access list (oss_addresses): 1 request"), 1U)
        << "the others are held back: " << out;
    EXPECT_THAT(deployment.Log("corbaoper.log"), Not(HasSubstr("MessageType:  REQUEST")));
    EXPECT_THAT(deployment.Log("CORBAAgentStatisticInfo.dat"), Not(HasSubstr("getEmsSession")));

    SetList("[\"192.0.2.250\", \"" + own + "\"]");
    deployment.RewriteConfig();
    SetClock(29);
    EXPECT_THROW(LogIn(), CORBA::NO_PERMISSION) << "the list counts for 30 seconds";
    SetClock(60);
    LogIn()->ping();
    EXPECT_TRUE(deployment.WaitForLog("corbaoper.log", {"REQUEST", "getEmsSession", "ping"}));
}

TEST_F(AccessListTest, TheLoopbackNeedsNoEntryAndAnEmptyListIsAnOpenDoor) {
    StartWithList(Deployment::kHost, "[\"192.0.2.250\"]");
    LogIn()->ping();
    deployment.KillAgent();
    const std::string own = HostAddress();
    if (own.empty()) {
        GTEST_SKIP() << "this host has no address but the loopback's";
    }
    StartWithList(own, "[]");
    LogIn()->ping();
}

}  // namespace
}  // namespace qv_e2e
