// What the agent says when it can't start.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/e2e/harness/deployment.h"

namespace qv_e2e {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// Starts the agent, which must end with exit code 1; what it wrote to standard error.
std::string Refusal(Deployment& deployment) {
    qv_test::ChildProcess& agent = deployment.LaunchAgent();
    EXPECT_EQ(agent.Wait(), 1) << agent.Out() << agent.Err();
    return agent.Err();
}

TEST(StartupFaults, ThePortIsInUse) {
    Deployment deployment;
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(deployment.agent_port()));
    ::inet_pton(AF_INET, Deployment::kHost, &address.sin_addr);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(fd, 1), 0);
    EXPECT_THAT(Refusal(deployment),
                HasSubstr("port " + std::to_string(deployment.agent_port()) + " of 127.0.0.2 is in use"));
    ::close(fd);
}

TEST(StartupFaults, ASecondAgentOnTheSamePort) {
    Deployment first;
    first.StartAgent();
    Deployment second;
    second.Set("CORBAAgent_Port", std::to_string(first.agent_port()));
    EXPECT_THAT(Refusal(second), HasSubstr("is in use by another process"));
}

TEST(StartupFaults, TheHostIsNotThisOne) {
    Deployment deployment;
    deployment.Set("CORBAAgent_Host", "\"192.0.2.77\"");
    EXPECT_THAT(Refusal(deployment), HasSubstr("192.0.2.77 is no address of this machine"));
}

TEST(StartupFaults, TheConfigurationIsGarbage) {
    Deployment deployment;
    for (const std::string& garbage :
         {std::string("\x7f"
                      "ELF\x02\x01 not toml"),
          std::string("[agent\n"), std::string("= = ="), std::string(2000, '{')}) {
        deployment.SetWholeConfig(garbage);
        EXPECT_THAT(Refusal(deployment),
                    AllOf(HasSubstr("agent.toml"), HasSubstr("yields no usable setting")));
    }
}

TEST(StartupFaults, TheRootOfTheInstallationIsMissing) {
    Deployment deployment;
    deployment.SetWholeConfig("[agent]\nTimerInterval = 1\n");
    EXPECT_THAT(Refusal(deployment), HasSubstr("env_root"));
}

TEST(StartupFaults, TheLogDirectoryCannotBeWritten) {
    Deployment deployment;
    // Below a file nothing can be made, not even by root.
    deployment.SetLogDir(deployment.dir().Write("a-file", "x") + "/log");
    EXPECT_THAT(Refusal(deployment), AllOf(HasSubstr("a-file/log"), HasSubstr("can't be written to")));
}

TEST(StartupFaults, TheInventoryIsDamaged) {
    Deployment deployment;
    const std::string whole = qv_test::ReadFile(Deployment::Data("inventory.json"));
    deployment.SetInventory(deployment.dir().Write("cut.json", whole.substr(0, whole.size() / 2)));
    EXPECT_THAT(Refusal(deployment), AllOf(HasSubstr("cut.json"), HasSubstr("not valid JSON")));
    deployment.SetInventory(deployment.dir().File("missing.json"));
    EXPECT_THAT(Refusal(deployment), HasSubstr("missing.json: can't be opened"));
}

TEST(StartupFaults, TheUsersAreReadableByEverybody) {
    Deployment deployment;
    ::chmod(deployment.dir().File("users.toml").c_str(), 0644);
    EXPECT_THAT(Refusal(deployment), HasSubstr("chmod o="));
}

TEST(StartupFaults, AnUnknownOrbOptionIsNamed) {
    Deployment deployment;
    deployment.Set("CORBAAgent_Option", "\"-ORBFlyToTheMoon yes\"");
    EXPECT_THAT(Refusal(deployment), HasSubstr("-ORBFlyToTheMoon"));
}

TEST(StartupFaults, ADamagedStatisticsFileHindersNothing) {
    Deployment deployment;
    deployment.StartNaming();
    for (const std::string& contents :
         {std::string("getEmsSession = "), std::string("\x01\x02\x03\n= = =\n"), std::string(100000, 'x'),
          std::string("getEmsSession = 99999999999999999999999999\nping = -1\n")}) {
        deployment.dir().Write("log/CORBAAgentStatisticInfo.dat", contents);
        deployment.StartAgent();
        EXPECT_EQ(deployment.Oss({"login"}).code, 0);
        EXPECT_TRUE(deployment.WaitForLog("CORBAAgentStatisticInfo.dat", {"getManager = 1\n"}))
            << deployment.Log("CORBAAgentStatisticInfo.dat");
        deployment.KillAgent();
    }
}

}  // namespace
}  // namespace qv_e2e
