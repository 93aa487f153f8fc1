// What thousands of failed handshakes leave behind in agent and services.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bench/ssl/trouble.h"
#include "tests/e2e/ssl/ssl_run.h"
#include "tests/support/sanitized.h"
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

std::size_t OpenFiles(pid_t process) {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(process) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

/// The first process that this one has started.
pid_t ChildOf(pid_t process) {
    const std::string id = std::to_string(process);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    pid_t child = -1;
    children >> child;
    return child;
}

/// Handshakes that fail in turns, for four reasons.
class Failures {
  public:
    explicit Failures(const bench::TroubleTarget& target)
        : makers_{{bench::TroubleKind::kNoCertificate, target},
                  {bench::TroubleKind::kClearToSsl, target},
                  {bench::TroubleKind::kRandomBytes, target},
                  {bench::TroubleKind::kSslToClear, target}} {}

    /// How many of so many did not fail.
    unsigned Make(unsigned times) {
        unsigned served = 0;
        for (; times > 0; --times, ++round_) {
            served += makers_[round_ % std::size(makers_)].Once(round_ / std::size(makers_)) ? 0 : 1;
        }
        return served;
    }

  private:
    const bench::Troublemaker makers_[4];
    unsigned round_ = 0;
};

class FailedHandshakes : public testing::Test {
  protected:
    void ExpectNothingLeft(pid_t process, int plain_port, int ssl_port) {
        constexpr unsigned kWarmUp = 2000;
        constexpr unsigned kHandshakes = 10000;
        [[maybe_unused]] constexpr long kMemory = 2000;  // KiB: 200 octets each would show
        constexpr std::size_t kFiles = 2;  // of the process's own work, such as a look at its registration
        Failures failures({Deployment::kHost, plain_port, ssl_port, run.oss_profile()});
        const std::size_t calm = OpenFiles(process);
        const auto settled = [&] {
            return qv_test::WaitFor([&] { return OpenFiles(process) <= calm + kFiles; });
        };
        EXPECT_EQ(failures.Make(kWarmUp), 0U);
        EXPECT_TRUE(settled());
        const long memory = ResidentMemory(process);
        EXPECT_EQ(failures.Make(kHandshakes), 0U);
        EXPECT_TRUE(settled()) << OpenFiles(process) << " instead of " << calm;
        const long grown = ResidentMemory(process) - memory;
        std::printf("%u failed handshakes: memory %ld KiB, %+ld KiB; open files %zu, %+ld\n", kHandshakes,
                    memory, grown, calm, static_cast<long>(OpenFiles(process)) - static_cast<long>(calm));
        RecordProperty("memory_grown_kib", static_cast<int>(grown));
        if (!qv_test::kSanitized) {  // sanitizers keep memory on purpose
            EXPECT_LT(grown, kMemory);
        }
    }

    SslRun run;
};

TEST_F(FailedHandshakes, LeaveNothingBehindInTheAgent) {
    run.StartNaming();
    run.StartAgent();
    ExpectNothingLeft(run.agent().pid(), run.agent_port(), run.agent_ssl_port());
    const auto session = run.Deployment::Oss({"session"});
    EXPECT_EQ(session.code, 0) << session.err;
}

TEST_F(FailedHandshakes, LeaveNothingBehindInTheNotificationService) {
    run.StartNaming();
    run.StartNotify();
    ExpectNothingLeft(run.notify().pid(), run.notify_port(), run.notify_ssl_port());
}

TEST_F(FailedHandshakes, LeaveNothingBehindInTheNameServer) {
    run.StartNaming();
    ExpectNothingLeft(ChildOf(run.naming().pid()), run.naming_port(), run.naming_ssl_port());
    const auto tree = run.Deployment::Oss({"browse"});
    EXPECT_EQ(tree.code, 0) << tree.err;
}

}  // namespace
}  // namespace qv_e2e
