// What an OSS is told when something on its way to the EMS is not as it should be.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/e2e/harness/deployment.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// Takes connections and never answers.
class SilentServer {
  public:
    SilentServer() : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(fd_, generic, length) != 0 || ::listen(fd_, 16) != 0 ||
            ::getsockname(fd_, generic, &length) != 0) {
            ADD_FAILURE() << "no silent server";
        }
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(fd_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

  private:
    const int fd_;
    int port_ = 0;
};

TEST(Unreachable, NoNamingService) {
    const Deployment deployment;
    for (const char* command : {"browse", "login", "list", "session"}) {
        const auto oss = deployment.Oss({command});
        EXPECT_EQ(oss.code, 3) << command;
        EXPECT_THAT(oss.err, HasSubstr("the naming service can't be reached")) << command;
    }
}

TEST(Unreachable, NoEmsIsBound) {
    Deployment deployment;
    deployment.StartNaming();
    const auto oss = deployment.Oss({"login"});
    EXPECT_EQ(oss.code, 4);
    EXPECT_THAT(oss.err, HasSubstr("no EMS is bound"));
    EXPECT_THAT(deployment.Oss({"browse"}).out, HasSubstr("(nothing is bound)"));
}

TEST(Unreachable, AnotherEmsIsBound) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    const auto oss = deployment.Oss({"login", "--ems", "Zorvex/Elsewhere"});
    EXPECT_EQ(oss.code, 4);
    EXPECT_THAT(oss.err, HasSubstr("no EMS named Zorvex/Elsewhere is bound; there is: Zorvex/KLV"));
    EXPECT_EQ(deployment.Oss({"login", "--ems", "Zorvex/KLV"}).code, 0);
}

TEST(Unreachable, TheEmsIsBoundButGone) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    deployment.KillAgent();
    const auto oss = deployment.Oss({"login"});
    EXPECT_EQ(oss.code, 5);
    EXPECT_THAT(oss.err, HasSubstr("the EMS can't be reached"));
}

TEST(Unreachable, WhatAnswersNeverAnswers) {
    const Deployment deployment;
    const SilentServer server;
    const auto start = std::chrono::steady_clock::now();
    const auto oss = deployment.Oss({"--naming", server.address(), "--timeout", "0.5", "browse"});
    EXPECT_EQ(oss.code, 9);
    EXPECT_THAT(oss.err, HasSubstr("the naming service did not answer within 0.5 s"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(Unreachable, WhatAnswersIsNoNamingService) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    const std::string agent = std::string(Deployment::kHost) + ":" + std::to_string(deployment.agent_port());
    const auto oss = deployment.Oss({"--naming", agent, "browse"});
    EXPECT_EQ(oss.code, 3);
    EXPECT_THAT(oss.err, HasSubstr("no naming service"));
}

TEST(Unreachable, FilesOfGarbageInPlaceOfAReference) {
    const Deployment deployment;
    const std::string huge(1000000, 'A');
    for (const std::string& contents :
         {std::string(), std::string("\n"), std::string("hello"), std::string("IOR:"), std::string("IOR:xyz"),
          std::string("IOR:0000"), std::string("IOR:ffffffffffffffff"), std::string(500, '\0'),
          "IOR:" + huge}) {
        const std::string file = deployment.dir().Write("garbage.ior", contents);
        for (const char* command : {"browse", "login"}) {
            const auto oss = deployment.Oss({"--ior", file, command});
            EXPECT_EQ(oss.code, 2) << contents.substr(0, 40) << ": " << oss.err;
            EXPECT_THAT(oss.err, testing::Not(IsEmpty()));
        }
    }
}

TEST(Unreachable, ATruncatedReferenceIsNoReference) {
    Deployment deployment;
    deployment.StartNaming();
    const std::string whole = qv_test::ReadFile(deployment.dir().File("ns.ior"));
    ASSERT_EQ(deployment.Oss({"--ior", deployment.dir().File("ns.ior"), "browse"}).code, 0);
    for (std::size_t length = 4; length + 16 < whole.size(); length += 13) {
        const std::string file = deployment.dir().Write("cut.ior", whole.substr(0, length));
        const auto oss = deployment.Oss({"--ior", file, "browse"});
        EXPECT_TRUE(oss.code == 2 || oss.code == 3) << length << ": " << oss.code << " " << oss.err;
    }
}

TEST(Unreachable, ACommandLineThatMakesNoSense) {
    const Deployment deployment;
    EXPECT_EQ(deployment.Oss({}).code, 2);
    EXPECT_EQ(deployment.Oss({"fly"}).code, 2);
    EXPECT_EQ(deployment.Oss({"list", "--page", "0"}).code, 2);
    EXPECT_EQ(deployment.Oss({"browse", "--timeout", "never"}).code, 2);
    for (const char* address :
         {"not an address", "host", "host:", ":1", "host:0", "host:65536", "host:1:2", "a b:1"}) {
        EXPECT_EQ(deployment.Oss({"--naming", address, "browse"}).code, 2) << address;
    }
    EXPECT_EQ(deployment.Oss({"login", "--password", "secret"}).code, 2) << "never on the command line";
}

}  // namespace
}  // namespace qv_e2e
