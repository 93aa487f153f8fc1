// The notification service dies in the middle of a stream of events and comes back.
#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>

#include "tests/e2e/events/event_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using qv_test::WaitFor;
using testing::HasSubstr;

/// Everything that was raised for an OSS arrived once and in order; what came twice is what somebody was in
/// doubt about: the agent of a push that failed, or the service, which tells that.
void ExpectAccounts(const EventRun& run, const qv_test::ChildProcess& oss, const std::string& service_says,
                    const EventRun::Selection& selection) {
    std::set<std::string> again;
    EXPECT_EQ(FirstOnes(ShownIds(oss), again), run.RaisedIds(selection));
    const std::set<std::string> failed = run.FailedIds();
    std::size_t told = 0;
    for (std::size_t at = 0; (at = service_says.find(" twice", at)) != std::string::npos; ++at) {
        ++told;
    }
    const auto unexplained = std::count_if(again.begin(), again.end(),
                                           [&](const std::string& id) { return failed.count(id) == 0; });
    EXPECT_LE(static_cast<std::size_t>(unexplained), told) << service_says;
}

std::size_t HeldEvents(const EventRun& run) {
    return run.Raised([](const RaisedEvent& event) { return event.held && IsNoHeartbeat(event); }).size();
}

/// Kills the notification service while events come, lets some gather in the agent, and starts it again.
void BreakService(EventRun& run, const qv_test::ChildProcess& oss) {
    ASSERT_TRUE(WaitFor([&] { return ShownIds(oss).size() >= 20; })) << oss.Out() << oss.Err();
    run.KillNotify();
    ASSERT_TRUE(WaitFor([&] { return HeldEvents(run) >= 20; })) << run.agent().Out();
    run.StartNotify();
}

TEST(EventOutage, LosesNothingOfAPersistentChannelAndKeepsTheOrder) {
    EventRun run(true);
    run.StartAll();
    const auto urgent = run.Listen({"--filter", kUrgentFilter});
    const auto rest = run.Listen({"--types", kAllButHeartbeats});
    run.Raise(400, 50);
    BreakService(run, *rest);
    ASSERT_TRUE(run.WaitUntilRaised(400)) << run.agent().Out();
    std::set<std::string> again;
    EXPECT_TRUE(WaitFor([&] { return FirstOnes(ShownIds(*rest), again).size() >= 400; })) << rest->Out();
    EXPECT_TRUE(WaitFor(
        [&] { return FirstOnes(ShownIds(*urgent), again).size() >= run.RaisedIds(IsUrgent).size(); }));
    ASSERT_EQ(run.RaisedIds(IsNoHeartbeat).size(), 400U);
    for (const auto* oss : {urgent.get(), rest.get()}) {
        EXPECT_TRUE(oss->WaitForOut("-- the EMS can't send events since ")) << oss->Out();
        EXPECT_TRUE(oss->WaitForOut("-- the EMS sends events again since ")) << oss->Out();
    }
    urgent->Signal(SIGTERM);
    rest->Signal(SIGTERM);
    EXPECT_EQ(urgent->Wait(), 0) << urgent->Err();
    EXPECT_EQ(rest->Wait(), 0) << rest->Err();
    ExpectAccounts(run, *urgent, run.notify().Err(), IsUrgent);
    ExpectAccounts(run, *rest, run.notify().Err(), IsNoHeartbeat);
    EXPECT_THAT(rest->Out(), HasSubstr("losses announced 1, cleared 1\n"));
}

TEST(EventOutage, AnnouncesTheFirstEventThatCouldNotBeSent) {
    EventRun run(true);
    run.StartAll();
    const auto oss = run.Listen({});
    run.KillNotify();
    run.Raise(10, 100);
    ASSERT_TRUE(oss->WaitForOut("the first one ")) << oss->Out() << run.agent().Out();
    const std::set<std::string> failed = run.FailedIds();
    ASSERT_FALSE(failed.empty());
    EXPECT_THAT(oss->Out(), HasSubstr("the first one " + *failed.begin() + "\n"));
    run.StartNotify();
    EXPECT_TRUE(oss->WaitForOut("-- the EMS sends events again since "));
}

TEST(EventOutage, AnAgentThatWasKilledTakesItsPersistentChannelOverAgain) {
    EventRun run(true);
    run.StartAll();
    const auto oss = run.Listen({"--types", kAllButHeartbeats});
    run.Raise(5, 100);
    ASSERT_TRUE(run.WaitUntilRaised(5));
    run.KillAgent();
    run.StartAgent();
    run.Raise(5, 100);
    ASSERT_TRUE(run.WaitUntilRaised(5));
    ASSERT_EQ(run.RaisedIds(IsNoHeartbeat).size(), 10U);
    EXPECT_TRUE(WaitFor([&] { return ShownIds(*oss).size() >= 10; })) << oss->Out();
    EXPECT_EQ(ShownIds(*oss), run.RaisedIds(IsNoHeartbeat));
}

TEST(EventOutage, DropsTheNewestEventsBeyondTheLimit) {
    EventRun run(true);
    run.Set("EventQueueLength", "10");
    run.StartAll();
    const auto oss = run.Listen({"--types", kAllButHeartbeats});
    run.KillNotify();
    run.Raise(60, 200);
    ASSERT_TRUE(run.WaitUntilRaised(60));
    run.StartNotify();
    ASSERT_TRUE(oss->WaitForOut("-- the EMS sends events again since ")) << oss->Out();
    ASSERT_TRUE(WaitFor([&] { return ShownIds(*oss).size() >= 9; })) << oss->Out();
    run.Raise(1, 1);
    ASSERT_TRUE(run.WaitUntilRaised(1));
    const std::vector<std::string> raised = run.RaisedIds(IsNoHeartbeat);
    ASSERT_TRUE(oss->WaitForOut(raised.back())) << oss->Out();
    // One place may have gone to a heartbeat, where that was the push that failed.
    const std::vector<std::string> shown = ShownIds(*oss);
    ASSERT_GE(shown.size(), 10U);
    ASSERT_LE(shown.size(), 11U);
    EXPECT_TRUE(std::equal(shown.begin(), shown.end() - 1, raised.begin())) << oss->Out();
}

}  // namespace
}  // namespace qv_e2e
