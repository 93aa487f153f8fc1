// Agent and naming service die and come back.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;

TEST(Restart, AReferenceThatTheOssKeptWorksAfterTheAgentWasKilledAndStartedAgain) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.Set("CORBAAgent_Option", "\"-out " + deployment.dir().Write("factory.ior", "") + "\"");
    deployment.StartAgent();
    const std::string kept = deployment.dir().File("kept.ior");
    std::filesystem::copy_file(deployment.dir().File("factory.ior"), kept);
    ASSERT_EQ(deployment.Oss({"--ior", kept, "login"}).code, 0);

    deployment.KillAgent();
    EXPECT_EQ(deployment.Oss({"--ior", kept, "login"}).code, 5);

    deployment.StartAgent();
    const auto again = deployment.Oss({"--ior", kept, "show", "NE-00001"});
    EXPECT_EQ(again.code, 0) << again.err;
}

TEST(Restart, TheCallCountsGoOnAfterARestartOfTheAgent) {
    Deployment deployment;
    deployment.StartNaming();
    for (const int run : {1, 2}) {
        deployment.StartAgent();
        ASSERT_EQ(deployment.Oss({"login"}).code, 0);
        // The file is rewritten with each call: complete after the last call of the OSS and with its last
        // line.
        const std::string count = " = " + std::to_string(run) + "\n";
        EXPECT_TRUE(deployment.WaitForLog("CORBAAgentStatisticInfo.dat",
                                          {"endSession" + count, "getEmsSession" + count, "ping" + count}))
            << deployment.Log("CORBAAgentStatisticInfo.dat");
        deployment.KillAgent();
    }
}

TEST(Restart, ANamingServiceThatWasKilledStillKnowsTheAgent) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    deployment.KillNaming();
    EXPECT_EQ(deployment.Oss({"login"}).code, 3);
    deployment.StartNaming();
    const auto oss = deployment.Oss({"login"});
    EXPECT_EQ(oss.code, 0) << oss.err;
}

TEST(Restart, TheAgentRegistersAnewWhereTheNamingServiceLostItsData) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    deployment.KillNaming();
    ASSERT_TRUE(deployment.agent().WaitForOut("lost the naming service"));
    deployment.LoseNamingData();
    deployment.StartNaming();
    EXPECT_TRUE(qv_test::WaitFor([&] { return deployment.Oss({"login"}).code == 0; }))
        << deployment.agent().Out();
}

TEST(Restart, AnAgentThatStartsWithoutANamingServiceRegistersOnceThereIsOne) {
    Deployment deployment;
    deployment.StartAgent();
    EXPECT_THAT(deployment.agent().Out(), HasSubstr("can't be reached; the agent runs on and keeps trying"));
    deployment.StartNaming();
    EXPECT_TRUE(deployment.agent().WaitForOut("registered as TMF_MTNM (Class)"));
    const auto oss = deployment.Oss({"login"});
    EXPECT_EQ(oss.code, 0) << oss.err;
}

}  // namespace
}  // namespace qv_e2e
