#include "demo/agent/core/session_table.h"

#include <gmock/gmock.h>

#include <optional>

#include "manual_clock.h"

namespace qv_demo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

SessionLimits Limits(int max, ReleaseStrategy strategy, seconds silent = seconds(60)) {
    return {max, strategy, silent};
}

TEST(SessionTable, AdmitsUpToTheLimitAndThenRefusesTheNewcomer) {
    ManualClock time;
    SessionTable table(Limits(2, ReleaseStrategy::kRefuseNewcomer), time.clock());
    EXPECT_TRUE(table.Admit("a").admitted);
    EXPECT_TRUE(table.Admit("b").admitted);
    const auto third = table.Admit("c");
    EXPECT_FALSE(third.admitted);
    EXPECT_THAT(third.evicted, IsEmpty());
    EXPECT_EQ(table.size(), 2U);
}

TEST(SessionTable, FirstInFirstOutEvictsTheOldestEvenWhenItWasHeardOfLast) {
    ManualClock time;
    SessionTable table(Limits(2, ReleaseStrategy::kFirstInFirstOut), time.clock());
    const auto first = table.Admit("a");
    const auto second = table.Admit("b");
    time.Advance(seconds(1));
    EXPECT_TRUE(table.Touch(first.id));
    const auto third = table.Admit("c");
    ASSERT_TRUE(third.admitted);
    EXPECT_THAT(third.evicted, ElementsAre(first.id));
    EXPECT_FALSE(table.Touch(first.id));
    EXPECT_TRUE(table.Touch(second.id));
}

TEST(SessionTable, SameIdentityReplacesItsOwnSession) {
    for (const auto strategy : {ReleaseStrategy::kRefuseNewcomer, ReleaseStrategy::kFirstInFirstOut}) {
        ManualClock time;
        SessionTable table(Limits(2, strategy), time.clock());
        table.Admit("other");
        const auto first = table.Admit("a");
        const auto again = table.Admit("a");
        EXPECT_TRUE(again.admitted);
        EXPECT_NE(again.id, first.id);
        EXPECT_THAT(again.evicted, ElementsAre(first.id));
        EXPECT_EQ(table.size(), 2U);
    }
}

TEST(SessionTable, ALimitBelowOneCountsAsOne) {
    for (const int limit : {0, -5}) {
        ManualClock time;
        SessionTable table(Limits(limit, ReleaseStrategy::kRefuseNewcomer), time.clock());
        EXPECT_TRUE(table.Admit("a").admitted);
        EXPECT_FALSE(table.Admit("b").admitted);
    }
}

TEST(SessionTable, SilentSessionsEndAndTouchedOnesStay) {
    ManualClock time;
    SessionTable table(Limits(5, ReleaseStrategy::kRefuseNewcomer, seconds(10)), time.clock());
    const auto silent = table.Admit("silent");
    const auto lively = table.Admit("lively");
    time.Advance(seconds(6));
    EXPECT_TRUE(table.Touch(lively.id));
    time.Advance(seconds(4));
    EXPECT_THAT(table.TakeSilent(), IsEmpty()) << "exactly the allowed time is not too long";
    time.Advance(milliseconds(1));
    EXPECT_THAT(table.TakeSilent(), ElementsAre(silent.id));
    EXPECT_EQ(table.size(), 1U);
    EXPECT_FALSE(table.Touch(silent.id));
}

TEST(SessionTable, NoSilentTimeMeansThatSilenceEndsNothing) {
    ManualClock time;
    SessionTable table(Limits(5, ReleaseStrategy::kRefuseNewcomer, seconds(0)), time.clock());
    table.Admit("a");
    time.Advance(std::chrono::hours(10000));
    EXPECT_THAT(table.TakeSilent(), IsEmpty());
}

TEST(SessionTable, RemoveMakesRoomOnce) {
    ManualClock time;
    SessionTable table(Limits(1, ReleaseStrategy::kRefuseNewcomer), time.clock());
    const auto first = table.Admit("a");
    EXPECT_TRUE(table.Remove(first.id));
    EXPECT_FALSE(table.Remove(first.id));
    EXPECT_TRUE(table.Admit("b").admitted);
}

TEST(SessionTable, FindsASessionByItsIdentityUntilItIsGoneWhateverTheWay) {
    ManualClock time;
    SessionTable table(Limits(2, ReleaseStrategy::kFirstInFirstOut, seconds(10)), time.clock());
    EXPECT_EQ(table.Find("a"), std::nullopt);
    table.Admit("a");
    const auto again = table.Admit("a");
    EXPECT_EQ(table.Find("a"), again.id) << "replaced by its own client";
    table.Remove(again.id);
    EXPECT_EQ(table.Find("a"), std::nullopt) << "removed";
    table.Admit("b");
    table.Admit("c");
    const auto newcomer = table.Admit("d");
    EXPECT_EQ(table.Find("b"), std::nullopt) << "made room";
    EXPECT_EQ(table.Find("d"), newcomer.id);
    time.Advance(seconds(11));
    table.TakeSilent();
    EXPECT_EQ(table.Find("d"), std::nullopt) << "silent";
}

TEST(SessionTable, OnlyTheValueOneMeansFirstInFirstOut) {
    EXPECT_EQ(ToReleaseStrategy(1), ReleaseStrategy::kFirstInFirstOut);
    for (const int value : {0, 2, -1}) {
        EXPECT_EQ(ToReleaseStrategy(value), ReleaseStrategy::kRefuseNewcomer) << value;
    }
}

}  // namespace
}  // namespace qv_demo
