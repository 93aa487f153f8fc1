#include "demo/oss/event_tally.h"

#include <gtest/gtest.h>

namespace qv_oss {
namespace {

TEST(EventTally, CountsByType) {
    EventTally tally;
    EXPECT_TRUE(tally.Count("NT_HEARTBEAT", "1"));
    EXPECT_TRUE(tally.Count("NT_ALARM", "2"));
    EXPECT_TRUE(tally.Count("NT_ALARM", "3"));
    EXPECT_EQ(tally.events(), 3U);
    EXPECT_EQ(tally.Summary(),
              "3 events: 2 NT_ALARM, 1 NT_HEARTBEAT; 0 of them came again; losses announced 0, cleared 0");
}

TEST(EventTally, NoticesAnEventThatComesAgain) {
    EventTally tally;
    EXPECT_TRUE(tally.Count("NT_ALARM", "2"));
    EXPECT_FALSE(tally.Count("NT_ALARM", "2"));
    tally.CountLoss();
    tally.CountCleared();
    EXPECT_EQ(tally.Summary(), "2 events: 2 NT_ALARM; 1 of them came again; losses announced 1, cleared 1");
}

TEST(EventTally, TakesEventsWithoutAnIdAsNew) {
    EventTally tally;
    EXPECT_TRUE(tally.Count("NT_ALARM", ""));
    EXPECT_TRUE(tally.Count("NT_ALARM", ""));
    EXPECT_EQ(tally.events(), 2U);
}

TEST(EventTally, SaysThatNothingCame) {
    EXPECT_EQ(EventTally().Summary(), "0 events; 0 of them came again; losses announced 0, cleared 0");
}

TEST(EventTally, ForgetsTheOldestIds) {
    EventTally tally;
    for (std::size_t i = 0; i <= EventTally::kRemembered; ++i) {
        ASSERT_TRUE(tally.Count("NT_ALARM", std::to_string(i)));
    }
    EXPECT_TRUE(tally.Count("NT_ALARM", "0"));
    EXPECT_FALSE(tally.Count("NT_ALARM", std::to_string(EventTally::kRemembered)));
}

}  // namespace
}  // namespace qv_oss
