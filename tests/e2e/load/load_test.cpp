// Many clients at once, and many elements in one reply.
#include <gmock/gmock.h>

#include "tests/e2e/harness/deployment.h"
#include "tests/support/sanitized.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;

std::size_t ResidentKilobytes(pid_t pid) {
    const std::string status = qv_test::ReadFile("/proc/" + std::to_string(pid) + "/status");
    const std::size_t at = status.find("VmRSS:");
    return at == std::string::npos ? 0 : std::stoul(status.substr(at + 6));
}

TEST(Load, TwoHundredClientsAtOnce) {
    constexpr int kClients = 200;
    Deployment deployment;
    deployment.Set("MaxSessionOfFIFO", "200");
    deployment.StartNaming();
    deployment.StartAgent();
    ASSERT_EQ(deployment.Oss({"login"}).code, 0);
    const std::size_t descriptors = deployment.AgentDescriptors();
    const std::size_t memory = ResidentKilobytes(deployment.agent().pid());

    std::vector<std::unique_ptr<qv_test::ChildProcess>> clients;
    for (int i = 0; i < kClients; ++i) {
        clients.push_back(deployment.StartOss({"login", "--timeout", "90"}));
    }
    int served = 0;
    for (const auto& client : clients) {
        const auto code = client->Wait(std::chrono::seconds(90));
        served += code == 0 ? 1 : 0;
        EXPECT_EQ(code, 0) << client->Err();
    }
    EXPECT_EQ(served, kClients);
    EXPECT_TRUE(deployment.agent().Running());
    EXPECT_TRUE(qv_test::WaitFor([&] { return deployment.AgentDescriptors() <= descriptors + 5; }))
        << deployment.AgentDescriptors() << " descriptors, before: " << descriptors;
    // The hashes' working memory goes back; what stays is the allocator's, and sanitizers keep more on
    // purpose.
    if (!qv_test::kSanitized) {
        EXPECT_LT(ResidentKilobytes(deployment.agent().pid()), memory + 300UL * 1024);
    }
}

TEST(Load, FiftyThousandElementsInOneReply) {
    Deployment deployment;
    const std::string inventory = deployment.dir().File("large.json");
    // With the remark, the reply has some 30 MB.
    const auto made = qv_test::Run({"python3", Deployment::Data("make_inventory.py"), "--count", "50000",
                                    "--remark", "320", "--out", inventory});
    ASSERT_EQ(made.code, 0) << made.err;
    deployment.SetInventory(inventory);
    deployment.StartNaming();
    deployment.StartAgent();
    const auto oss = deployment.Oss({"list", "--page", "50000", "--timeout", "60"});
    EXPECT_EQ(oss.code, 0) << oss.err;
    EXPECT_THAT(oss.out, HasSubstr("50000 elements in 1 reply"));
    EXPECT_THAT(oss.out, HasSubstr("\nNE-50000 "));
}

}  // namespace
}  // namespace qv_e2e
