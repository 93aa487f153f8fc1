// A transient channel is made anew after the notification service died.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/events/event_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

TEST(TransientChannel, IsMadeAnewAndTheOssListensAgain) {
    EventRun run(false);
    run.StartAll();
    const auto oss = run.Listen({"--types", kAllButHeartbeats});
    run.KillNotify();
    run.Raise(5, 100);
    ASSERT_TRUE(oss->WaitForOut("-- the EMS can't send events since ")) << oss->Out();
    run.StartNotify();
    ASSERT_TRUE(oss->WaitForOut("-- listening again, to a new event channel\n")) << oss->Out();

    const auto newcomer = run.Listen({"--types", kAllButHeartbeats, "--count", "5"});
    ASSERT_TRUE(run.WaitUntilRaised(5));
    run.Raise(7, 100);
    ASSERT_TRUE(run.WaitUntilRaised(7));
    const std::string last = run.RaisedIds(IsNoHeartbeat).back();
    EXPECT_TRUE(oss->WaitForOut(last)) << oss->Out();
    EXPECT_EQ(newcomer->Wait(), 0) << newcomer->Err();
    oss->Signal(SIGTERM);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
}

}  // namespace
}  // namespace qv_e2e
