// Clients that behave are served beside peers that do not. How well is measured by the benchmark of SSL; here
// a bound that even a busy machine keeps shows that nobody is shut out.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "bench/ssl/trouble.h"
#include "ssl_server.h"
#include "tests/support/sanitized.h"

namespace {

using namespace qv_test;

// Under a sanitizer a handshake costs many times what it does otherwise.
constexpr double kLeastRatio = kSanitized ? 0.1 : 0.2;

class TroubleTest : public SslTest, public ::testing::WithParamInterface<std::string> {
  protected:
    /// Calls per second of another process over one connection.
    double Rate() {
        constexpr int kCalls = 10000;
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(
            RunPeer(ClientProfile(), {"crowd", server->ior(), "echo", "hello", "1", std::to_string(kCalls)}),
            "hello x" + std::to_string(kCalls));
        return kCalls / std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
};

TEST_P(TroubleTest, OthersAreServed) {
    constexpr unsigned kPerSecond = 50;
    constexpr int kRounds = 5;
    Serve();
    const bench::TroubleTarget target{"127.0.0.1", server->port(), ssl_port, ClientProfile()};
    Rate();
    std::vector<double> ratios;
    unsigned long made = 0;
    for (int round = 0; round < kRounds; ++round) {
        const double calm = Rate();
        const bench::Trouble trouble(bench::TroubleKindOf(GetParam()), target, kPerSecond);
        ratios.push_back(Rate() / calm);
        made += trouble.Made();
        EXPECT_EQ(trouble.Failed(), 0U) << "what the server should have refused or heard";
    }
    std::sort(ratios.begin(), ratios.end());
    const double median = ratios[kRounds / 2];
    std::printf("%s: %lu times, others at %.2f of their rate (%.2f to %.2f)\n", GetParam().c_str(), made,
                median, ratios.front(), ratios.back());
    RecordProperty("ratio", std::to_string(median));
    EXPECT_GT(made, 0U);
    EXPECT_GT(median, kLeastRatio);
    EXPECT_EQ(CallAsClient(), "hello");
}

INSTANTIATE_TEST_SUITE_P(Kinds, TroubleTest, ::testing::ValuesIn(bench::TroubleKinds()),
                         [](const auto& kind) {
                             std::string name = kind.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
