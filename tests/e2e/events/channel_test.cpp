// The way to the event channel, and what an OSS is told when there is none.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/e2e/events/event_run.h"
#include "tests/e2e/harness/oss_in_process.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;

class EventChannel : public InterfaceTest {
  protected:
    EventChannel() {
        deployment.SendEvents(true);
        deployment.Set("ORBThreadPoolEnable", "false");
    }

    /// What the EMS hands out once it has made a channel.
    CosNotifyChannelAdmin::EventChannel_var Channel() {
        const auto session = LogIn();
        CosNotifyChannelAdmin::EventChannel_var channel;
        EXPECT_TRUE(qv_test::WaitFor([&] {
            try {
                session->getEventChannel(channel.out());
                return true;
            } catch (const globaldefs::ProcessingFailureException&) {
                return false;
            }
        }));
        return channel;
    }
};

TEST_F(EventChannel, IsRefusedUntilTheNotificationServiceIsThere) {
    Start();
    const auto session = LogIn();
    CosNotifyChannelAdmin::EventChannel_var channel;
    std::string reason;
    EXPECT_EQ(FailureOf([&] { session->getEventChannel(channel.out()); }, &reason),
              globaldefs::EXCPT_UNABLE_TO_COMPLY);
    EXPECT_THAT(reason, HasSubstr("no event channel yet"));

    deployment.StartNotify();
    EXPECT_FALSE(Channel()->_non_existent());
}

TEST_F(EventChannel, HoldsNothingOfAnOssThatHasEnded) {
    Start();
    deployment.StartNotify();
    const auto channel = Channel();
    const auto admins = [&] {
        const CosNotifyChannelAdmin::AdminIDSeq_var all = channel->get_all_consumeradmins();
        return all->length();
    };
    const CORBA::ULong before = admins();
    const auto oss = deployment.StartOss({"events", "--filter", kUrgentFilter});
    ASSERT_TRUE(oss->WaitForOut("-- listening\n")) << oss->Err();
    EXPECT_EQ(admins(), before + 1);
    oss->Signal(SIGTERM);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
    EXPECT_EQ(admins(), before);
}

TEST(EventProblems, AnEmsWithoutEventsHasACodeOfItsOwn) {
    Deployment deployment;
    deployment.StartNaming();
    deployment.StartAgent();
    const auto events = deployment.Oss({"events"});
    EXPECT_EQ(events.code, 12);
    EXPECT_THAT(events.err, HasSubstr("this EMS sends no events"));
    EXPECT_EQ(deployment.Oss({"raise", "1"}).code, 1);
}

TEST(EventProblems, AServiceThatIsGoneHasACodeOfItsOwn) {
    EventRun run(true);
    run.StartAll();
    run.KillNotify();
    const auto events = run.Deployment::Oss({"events"});
    EXPECT_EQ(events.code, 12);
    EXPECT_THAT(events.err, HasSubstr("notification service that the EMS names can't be reached"));
}

TEST(EventProblems, AFilterThatIsWrongIsAUsageErrorAndLeavesNothingBehind) {
    EventRun run(true);
    run.StartAll();
    const auto events = run.Deployment::Oss({"events", "--filter", "$a =="});
    EXPECT_EQ(events.code, 2);
    EXPECT_THAT(events.err, HasSubstr("doesn't understand the filter \"$a ==\""));
}

TEST(EventProblems, ASubscriptionThatCanNotBeEndedIsTold) {
    EventRun run(true);
    run.StartAll();
    const auto oss = run.Listen({});
    run.KillNotify();
    oss->Signal(SIGTERM);
    EXPECT_EQ(oss->Wait(), 12);
    EXPECT_THAT(oss->Err(), HasSubstr("could not be ended"));
    EXPECT_THAT(oss->Out(), HasSubstr("came again; losses announced"));
}

TEST(EventProblems, ALedgerThatCanNotBeWrittenKeepsTheAgentFromStarting) {
    EventRun run(true);
    run.StartNaming();
    run.dir().Write("log/events.csv/in-the-way", "");
    EXPECT_EQ(run.LaunchAgent().Wait(), 1);
    EXPECT_THAT(run.agent().Err(), HasSubstr("events.csv can't be written"));
}

}  // namespace
}  // namespace qv_e2e
