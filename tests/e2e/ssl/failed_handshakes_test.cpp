// What thousands of failed handshakes leave behind in the agent.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "bench/ssl/trouble.h"
#include "tests/e2e/ssl/ssl_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

/// Memory in use, in KiB.
long ResidentMemory(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return 0;
}

TEST(FailedHandshakes, LeaveNothingBehindInTheAgent) {
    constexpr unsigned kWarmUp = 1000;
    constexpr unsigned kHandshakes = 10000;
    constexpr long kMemory = 2000;     // KiB: 200 octets each would show
    constexpr std::size_t kFiles = 2;  // those of the agent's own work, such as the look at its registration
    SslRun run;
    run.StartNaming();
    run.StartAgent();
    const bench::TroubleTarget target{Deployment::kHost, run.agent_port(), run.agent_ssl_port(),
                                      run.oss_profile()};
    const bench::Troublemaker makers[] = {{bench::TroubleKind::kNoCertificate, target},
                                          {bench::TroubleKind::kClearToSsl, target},
                                          {bench::TroubleKind::kRandomBytes, target},
                                          {bench::TroubleKind::kSslToClear, target}};
    unsigned served = 0;
    const auto fail = [&](unsigned times) {
        for (unsigned round = 0; round < times; ++round) {
            served += makers[round % std::size(makers)].Once(round / std::size(makers)) ? 0 : 1;
        }
    };
    const std::size_t calm = run.AgentDescriptors();
    fail(kWarmUp);
    EXPECT_TRUE(qv_test::WaitFor([&] { return run.AgentDescriptors() <= calm + kFiles; }));
    const long memory = ResidentMemory(run.agent().pid());
    fail(kHandshakes);
    EXPECT_EQ(served, 0U);
    EXPECT_TRUE(qv_test::WaitFor([&] { return run.AgentDescriptors() <= calm + kFiles; }))
        << run.AgentDescriptors() << " instead of " << calm;
    const long grown = ResidentMemory(run.agent().pid()) - memory;
    std::printf("%u failed handshakes: memory %ld KiB, %+ld KiB; open files %zu, %+ld\n", kHandshakes, memory,
                grown, calm, static_cast<long>(run.AgentDescriptors()) - static_cast<long>(calm));
    RecordProperty("memory_grown_kib", static_cast<int>(grown));
    EXPECT_LT(grown, kMemory);
    const auto session = run.Deployment::Oss({"session"});
    EXPECT_EQ(session.code, 0) << session.err;
}

}  // namespace
}  // namespace qv_e2e
