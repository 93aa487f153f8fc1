// What clients do to an agent that they should not.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <random>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

int ConnectTo(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    ::inet_pton(AF_INET, Deployment::kHost, &address.sin_addr);
    EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return fd;
}

void Send(int fd, const std::string& bytes) {
    // The agent may hang up in the middle, which is its good right.
    (void)::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

std::string GiopHeader(char minor, char flags, char type, std::uint32_t size) {
    std::string header = "GIOP";
    header += '\1';
    header += minor;
    header += flags;
    header += type;
    for (int shift = 0; shift < 32; shift += 8) {
        header += static_cast<char>(size >> shift & 0xff);
    }
    return header;
}

std::vector<std::string> Junk() {
    std::mt19937 dice(814);
    std::vector<std::string> junk;
    for (int i = 0; i < 60; ++i) {
        std::string bytes(1 + dice() % 4000, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(dice());
        }
        junk.push_back(bytes);
        // The same behind a header that a GIOP reader accepts, of each version and message type.
        junk.push_back(GiopHeader(static_cast<char>(i % 3), static_cast<char>(i % 4),
                                  static_cast<char>(i % 9), static_cast<std::uint32_t>(bytes.size())) +
                       bytes);
    }
    junk.push_back("GET / HTTP/1.1\r\nHost: agent\r\n\r\n");
    junk.push_back(GiopHeader(2, 1, 0, 0xffffffff));          // a message of four gigabytes
    junk.push_back(GiopHeader(2, 1, 0, 1000) + "too short");  // and one that never comes to its end
    return junk;
}

class HostileClients : public testing::Test {
  protected:
    void SetUp() override {
        deployment.StartNaming();
        deployment.StartAgent();
        ASSERT_EQ(deployment.Oss({"login"}).code, 0);
        descriptors = deployment.AgentDescriptors();
    }

    void ExpectUnharmed() {
        ASSERT_TRUE(deployment.agent().Running()) << deployment.agent().Err();
        const auto oss = deployment.Oss({"session"});
        EXPECT_EQ(oss.code, 0) << oss.err;
        EXPECT_TRUE(qv_test::WaitFor([&] { return deployment.AgentDescriptors() <= descriptors + 5; }))
            << deployment.AgentDescriptors() << " descriptors, before: " << descriptors;
    }

    Deployment deployment;
    std::size_t descriptors = 0;
};

TEST_F(HostileClients, RandomBytes) {
    for (const std::string& bytes : Junk()) {
        const int fd = ConnectTo(deployment.agent_port());
        Send(fd, bytes);
        ::close(fd);
    }
    ExpectUnharmed();
}

TEST_F(HostileClients, ConnectionsThatSayNothingKeepNobodyOut) {
    std::vector<int> fds;
    for (int i = 0; i < 100; ++i) {
        fds.push_back(ConnectTo(deployment.agent_port()));
        Send(fds.back(), i % 2 == 0 ? "" : GiopHeader(2, 1, 0, 100) + "begun");
    }
    const auto oss = deployment.Oss({"session"});
    EXPECT_EQ(oss.code, 0) << oss.err;
    for (const int fd : fds) {
        ::close(fd);
    }
    ExpectUnharmed();
}

TEST_F(HostileClients, KilledInTheMiddleOfACall) {
    for (int i = 0; i < 10; ++i) {
        const auto oss = deployment.StartOss({"list", "--page", "1"});
        ASSERT_TRUE(oss->WaitForOut("NE-00001"));
        oss->Kill();
    }
    ExpectUnharmed();
}

TEST_F(HostileClients, KilledWhileALargeReplyIsOnItsWay) {
    deployment.KillAgent();
    const std::string inventory = deployment.dir().File("large.json");
    const auto made = qv_test::Run(
        {"python3", Deployment::Data("make_inventory.py"), "--count", "20000", "--out", inventory});
    ASSERT_EQ(made.code, 0) << made.err;
    deployment.SetInventory(inventory);
    deployment.StartAgent();
    descriptors = deployment.AgentDescriptors();
    for (int i = 0; i < 5; ++i) {
        const auto oss = deployment.StartOss({"list", "--page", "20000"});
        const std::string called = "getAllManagedElements = " + std::to_string(i + 1) + "\n";
        ASSERT_TRUE(deployment.WaitForLog("CORBAAgentStatisticInfo.dat", {called}));
        oss->Kill();
    }
    ExpectUnharmed();
}

}  // namespace
}  // namespace qv_e2e
