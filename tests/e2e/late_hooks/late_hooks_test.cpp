// Until the agent has plugged its hooks in, every request is refused.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/harness/deployment.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(LateHooks, RequestsAreRefusedUntilTheHooksArePluggedIn) {
    const Deployment deployment;
    const std::string config = deployment.dir().Write(
        "late.toml", "[agent]\nCORBAAgent_Host = \"127.0.0.2\"\nCORBAAgent_Port = " +
                         std::to_string(deployment.agent_port()) +
                         "\nIsInterceptorEnabled = true\n[platform]\nenv_root = \".\"\n"
                         "log_flush_interval = 20\n");
    const std::string ior = deployment.dir().Write("factory.ior", "");
    qv_test::ChildOptions options;
    options.env["QV_AGENT_CONFIG"] = config;
    options.env["QV_LOG_DIR"] = deployment.log_dir();
    qv_test::ChildProcess agent({QV_LATE_AGENT, ior}, options);
    ASSERT_TRUE(agent.WaitForOut("serving without hooks")) << agent.Err();

    const auto refused = deployment.Oss({"--ior", ior, "login"});
    EXPECT_EQ(refused.code, 8);
    EXPECT_THAT(refused.err, HasSubstr("no permission"));
    EXPECT_TRUE(deployment.WaitForLog("corbadebug.log", {"No Permission, Interceptor is null"}));
    EXPECT_THAT(deployment.Log("CORBAAgentStatisticInfo.dat"), Not(HasSubstr("getEmsSession")));

    agent.Signal(SIGUSR1);
    ASSERT_TRUE(agent.WaitForOut("plugged in"));
    const auto served = deployment.Oss({"--ior", ior, "login"});
    EXPECT_EQ(served.code, 6);
    EXPECT_THAT(served.err, HasSubstr("closed today"));
    EXPECT_TRUE(deployment.WaitForLog("CORBAAgentStatisticInfo.dat", {"getEmsSession = 1\n"}))
        << deployment.Log("CORBAAgentStatisticInfo.dat");
}

}  // namespace
}  // namespace qv_e2e
