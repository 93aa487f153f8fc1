#include "demo/agent/core/refusal_reports.h"

#include <gtest/gtest.h>

#include "manual_clock.h"

namespace qv_demo {
namespace {

class RefusalReportsTest : public testing::Test {
  protected:
    ManualClock time;
    RefusalReports reports{time.clock()};
};

TEST_F(RefusalReportsTest, TheFirstIsToldAndTheOthersOnceAMinuteWithTheirNumber) {
    EXPECT_EQ(reports.Count("a"), 1U);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(reports.Count("a"), std::nullopt);
    }
    time.Advance(RefusalReports::kInterval - std::chrono::milliseconds(1));
    EXPECT_EQ(reports.Count("a"), std::nullopt);
    time.Advance(std::chrono::milliseconds(1));
    EXPECT_EQ(reports.Count("a"), 7U);
    EXPECT_EQ(reports.Count("a"), std::nullopt);
}

TEST_F(RefusalReportsTest, EachHostCountsForItself) {
    EXPECT_EQ(reports.Count("a"), 1U);
    EXPECT_EQ(reports.Count("b"), 1U);
}

TEST_F(RefusalReportsTest, ACrowdOfHostsSharesOneLineUntilOthersAreQuiet) {
    for (std::size_t i = 0; i < RefusalReports::kMostHosts; ++i) {
        EXPECT_EQ(reports.Count("host" + std::to_string(i)), 1U);
    }
    EXPECT_EQ(reports.Count("another"), 1U) << "the first of the rest";
    EXPECT_EQ(reports.Count("yet another"), std::nullopt);
    time.Advance(RefusalReports::kInterval);
    EXPECT_EQ(reports.Count("one more"), 1U) << "has a place of its own now";
    EXPECT_EQ(reports.Count("host1"), 1U);
}

}  // namespace
}  // namespace qv_demo
