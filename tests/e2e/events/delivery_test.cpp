// Events from the agent through the notification service to OSSs.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/events/event_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using qv_test::WaitFor;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(EventDelivery, EachOssGetsWhatItsFilterLetsThroughAndInOrder) {
    EventRun run(true);
    run.StartAll();
    const auto urgent = run.Listen({"--filter", kUrgentFilter});
    const auto rest = run.Listen({"--types", kAllButHeartbeats});
    run.Raise(100, 200);
    ASSERT_TRUE(run.WaitUntilRaised(100)) << run.agent().Out();
    ASSERT_EQ(run.Raised(IsNoHeartbeat).size(), 100U);
    ASSERT_TRUE(WaitFor([&] { return ShownIds(*rest).size() >= 100; })) << rest->Out();
    EXPECT_TRUE(WaitFor([&] { return ShownIds(*urgent).size() >= run.RaisedIds(IsUrgent).size(); }));
    urgent->Signal(SIGTERM);
    rest->Signal(SIGINT);
    EXPECT_EQ(urgent->Wait(), 0) << urgent->Err();
    EXPECT_EQ(rest->Wait(), 0) << rest->Err();
    EXPECT_EQ(ShownIds(*urgent), run.RaisedIds(IsUrgent));
    EXPECT_EQ(ShownIds(*rest), run.RaisedIds(IsNoHeartbeat));
    const auto alarms = run.Raised([](const RaisedEvent& event) { return event.type == "NT_ALARM"; }).size();
    EXPECT_THAT(rest->Out(), HasSubstr("-- 100 events: " + std::to_string(alarms) + " NT_ALARM, " +
                                       std::to_string(100 - alarms) +
                                       " NT_ATTRIBUTE_VALUE_CHANGE; 0 of them came again; losses announced "
                                       "0, cleared 0\n"));
}

TEST(EventDelivery, AFilterMayLookAtTheNumberAndTheText) {
    EventRun run(false);
    run.StartAll();
    const auto some =
        run.Listen({"--filter", "$eventNumber > 3 and 'label' ~ $additionalText", "--count", "2"});
    run.Raise(40, 100);
    EXPECT_EQ(some->Wait(), 0) << some->Err();
    EXPECT_THAT(some->Out(), HasSubstr("userLabel = label-"));
    EXPECT_GE(ShownIds(*some).size(), 2U);
}

TEST(EventDelivery, HeartbeatsComeWithEachLookAtTheChannel) {
    EventRun run(true);
    run.StartAll();
    const auto oss = run.Listen({"--types", "NT_HEARTBEAT", "--count", "2"});
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
    EXPECT_THAT(oss->Out(), HasSubstr("NT_HEARTBEAT"));
    EXPECT_THAT(oss->Out(), HasSubstr("the EMS is alive"));
}

TEST(EventDelivery, AnAlarmsTextIsInTheNotificationLog) {
    EventRun run(true);
    run.Set("bLogNotify", "true");
    run.StartAll();
    run.Raise(5, 100);
    ASSERT_TRUE(run.WaitUntilRaised(5));
    const std::string id =
        run.RaisedIds([](const RaisedEvent& event) { return event.type == "NT_ALARM"; }).front();
    EXPECT_TRUE(
        run.WaitForLog("corbanotify.log", {"{notificationId value " + id + "}{name objectName value NE-",
                                           "{name perceivedSeverity value ", "{name additionalText value "}))
        << run.Log("corbanotify.log");
}

TEST(EventDelivery, AnEventIsOneLineWithItsColumns) {
    EventRun run(true);
    run.StartAll();
    const auto oss = run.Listen({"--types", "NT_ALARM", "--count", "1"});
    run.Raise(5, 100);
    ASSERT_EQ(oss->Wait(), 0) << oss->Err();
    const std::string out = oss->Out();
    const std::size_t begin = out.find('\n') + 1;
    EXPECT_THAT(out.substr(begin, out.find('\n', begin) - begin),
                MatchesRegex("[0-9]+\\.0Z +NT_ALARM +[0-9]+ +[A-Z]+ +NE-[0-9]+ +[a-z ]+"));
}

}  // namespace
}  // namespace qv_e2e
