// The program that accounts for the events of the demo.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr const char* kBuffered = "Warning: The event channel is out of service, one event was buffered!\n";
constexpr const char* kDropped =
    "Warning: The buffer for notification event is overflowed, one event was discarded!\n";

std::string Shown(const std::string& id) {
    return "20250102030405.0Z  NT_ALARM  " + id + "  MAJOR  NE-1  text\n";
}

/// Six events: one sent, one that failed and was buffered, one buffered, one dropped, a heartbeat, one sent.
class AccountEvents : public testing::Test {
  protected:
    qv_test::RunResult Run() const {
        return qv_test::Run({QV_ACCOUNT_EVENTS, "--ledger", dir.Write("ledger", ledger), "--traces",
                             dir.Write("log", log), "--service", dir.Write("service", service), "--oss",
                             "all", dir.Write("all", all), "type=NT_ALARM", "--oss", "major",
                             dir.Write("major", major), "severity=PS_MAJOR"});
    }

    const qv_test::TempDir dir;
    std::string ledger =
        "cleared,t\n"
        "event,1,a,NT_ALARM,PS_MAJOR,NE-1,sent\n"
        "loss,t,b\n"
        "event,2,b,NT_ALARM,PS_MINOR,NE-1,held\n"
        "event,3,c,NT_ALARM,PS_MAJOR,NE-1,held\n"
        "event,4,d,NT_ALARM,PS_MAJOR,NE-1,held\n"
        "event,5,e,NT_HEARTBEAT,,,held\n"
        "cleared,t\n"
        "event,6,f,NT_ALARM,PS_MAJOR,NE-1,sent\n";
    std::string log = std::string(kBuffered) + kBuffered + "something else\n" + kDropped;
    std::string service = "Notify_Service: serving\n";
    std::string all = "-- listening\n" + Shown("a") + Shown("b") + Shown("c") + Shown("f") + "-- 4 events\n";
    std::string major = "-- listening\n" + Shown("a") + Shown("c") + Shown("f");
};

TEST_F(AccountEvents, SaysWhatBecameOfEachEvent) {
    const auto result = Run();
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, ContainsRegex("raised +6 +6\n"));
    EXPECT_THAT(result.out, ContainsRegex("delivered +2 +2\n"));
    EXPECT_THAT(result.out, ContainsRegex("buffered, then delivered +2 +1\n"));
    EXPECT_THAT(result.out, ContainsRegex("filtered +0 +1\n"));
    EXPECT_THAT(result.out, ContainsRegex("dropped by the limit +1 +1\n"));
    EXPECT_THAT(result.out, ContainsRegex("heartbeats dropped +1 +1\n"));
}

TEST_F(AccountEvents, KnowThatTheLogCountsEqualRecords) {
    log = std::string(kBuffered) + "log_file:0 the record above came 1 times more\n" + kDropped;
    EXPECT_EQ(Run().code, 0);
}

TEST_F(AccountEvents, FailWhenAnEventIsMissing) {
    major = Shown("a") + Shown("f");
    const auto result = Run();
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("major lacks c (event 3)"));
    EXPECT_THAT(result.err, HasSubstr("1 of 6 events are not accounted for"));
}

TEST_F(AccountEvents, FailWhenAnEventPassedTheFilterThatShouldNot) {
    major += Shown("b");
    const auto result = Run();
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("major got b, which isn't for it"));
}

TEST_F(AccountEvents, FailWhenTheOrderIsAnother) {
    all = Shown("a") + Shown("c") + Shown("b") + Shown("f");
    const auto result = Run();
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("another order"));
}

TEST_F(AccountEvents, FailWhenOneCameTwiceUnlessThatWasInDoubt) {
    all += Shown("c");
    EXPECT_EQ(Run().code, 1);
    service += "Notify_Service: the consumer may get an event twice\n";
    EXPECT_EQ(Run().code, 0);
    all += Shown("a");
    EXPECT_EQ(Run().code, 1) << "it was in doubt of one event, and two came again";
    service = "";
    all = Shown("a") + Shown("b") + Shown("b") + Shown("c") + Shown("f");
    EXPECT_EQ(Run().code, 0) << "the push of b failed and was made again";
}

TEST_F(AccountEvents, FailWhenTheLogTellsOfOtherEvents) {
    log += kBuffered;
    const auto result = Run();
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("3 events were held back, but the agent's traces tell of 4"));
}

}  // namespace
