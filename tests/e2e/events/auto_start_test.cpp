// The agent starts its naming and notification service itself.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/events/companions.h"
#include "tests/e2e/events/event_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

TEST(CompanionServices, StartAndEndWithTheAgent) {
    EventRun run(true);
    const Companions companions(run);
    run.StartAgent();
    const pid_t naming = companions.Pid("naming");
    const pid_t notify = companions.Pid("notify");
    ASSERT_TRUE(companions.Runs(naming));
    ASSERT_TRUE(companions.Runs(notify));
    const auto oss = run.Listen({"--types", kAllButHeartbeats, "--count", "5"});
    run.Raise(5, 50);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
    EXPECT_EQ(ShownIds(*oss), run.RaisedIds(IsNoHeartbeat));
    run.agent().Signal(SIGTERM);
    EXPECT_EQ(run.agent().Wait(), 0) << run.agent().Err();
    EXPECT_TRUE(qv_test::WaitFor([&] { return !companions.Runs(naming) && !companions.Runs(notify); }));
}

}  // namespace
}  // namespace qv_e2e
