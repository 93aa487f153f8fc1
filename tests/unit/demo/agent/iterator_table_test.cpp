#include "demo/agent/core/iterator_table.h"

#include <gmock/gmock.h>

#include "manual_clock.h"

namespace qv_demo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(IteratorTable, LimitsOneSessionWithoutTouchingTheOthers) {
    ManualClock time;
    IteratorTable table({10, 2, seconds(60)}, time.clock());
    EXPECT_TRUE(table.Open(1));
    EXPECT_TRUE(table.Open(1));
    EXPECT_FALSE(table.Open(1));
    EXPECT_TRUE(table.Open(2));
}

TEST(IteratorTable, LimitsAllSessionsTogether) {
    ManualClock time;
    IteratorTable table({3, 2, seconds(60)}, time.clock());
    const auto first = table.Open(1);
    table.Open(2);
    table.Open(3);
    EXPECT_FALSE(table.Open(4));
    EXPECT_TRUE(table.Close(*first));
    EXPECT_TRUE(table.Open(4));
}

TEST(IteratorTable, ClosesOnlyOnce) {
    ManualClock time;
    IteratorTable table({3, 2, seconds(60)}, time.clock());
    const auto id = table.Open(1);
    EXPECT_TRUE(table.Close(*id));
    EXPECT_FALSE(table.Close(*id));
    EXPECT_FALSE(table.Touch(*id));
}

TEST(IteratorTable, ASessionTakesItsIteratorsAlong) {
    ManualClock time;
    IteratorTable table({10, 10, seconds(60)}, time.clock());
    const auto a = table.Open(1);
    const auto other = table.Open(2);
    const auto b = table.Open(1);
    EXPECT_THAT(table.CloseSession(1), ElementsAre(*a, *b));
    EXPECT_THAT(table.CloseSession(1), IsEmpty());
    EXPECT_TRUE(table.Touch(*other));
}

TEST(IteratorTable, UnusedOnesExpire) {
    ManualClock time;
    IteratorTable table({10, 10, seconds(5)}, time.clock());
    const auto idle = table.Open(1);
    const auto used = table.Open(1);
    time.Advance(seconds(3));
    EXPECT_TRUE(table.Touch(*used));
    time.Advance(seconds(2));
    EXPECT_THAT(table.TakeExpired(), IsEmpty());
    time.Advance(milliseconds(1));
    EXPECT_THAT(table.TakeExpired(), ElementsAre(*idle));
    EXPECT_EQ(table.size(), 1U);
}

TEST(IteratorTable, NoTimeoutMeansThatNothingExpires) {
    ManualClock time;
    IteratorTable table({10, 10, seconds(0)}, time.clock());
    table.Open(1);
    time.Advance(std::chrono::hours(10000));
    EXPECT_THAT(table.TakeExpired(), IsEmpty());
}

TEST(IteratorTable, ALimitOfNoneLetsNobodyOpenOne) {
    ManualClock time;
    IteratorTable none({0, 10, seconds(5)}, time.clock());
    EXPECT_FALSE(none.Open(1));
    IteratorTable none_each({10, 0, seconds(5)}, time.clock());
    EXPECT_FALSE(none_each.Open(1));
}

}  // namespace
}  // namespace qv_demo
