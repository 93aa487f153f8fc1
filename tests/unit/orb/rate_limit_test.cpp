#include "rate_limit.h"

#include <gtest/gtest.h>

namespace {

using qv_orb::RateLimit;

const RateLimit::Time kStart{std::chrono::hours(1)};

void UseUp(RateLimit& limit, RateLimit::Time now) {
    for (unsigned i = 0; i < RateLimit::kBurst; ++i) {
        EXPECT_EQ(limit.Admit(now), 0UL);
    }
}

}  // namespace

TEST(RateLimit, LetsABurstThroughAndDropsTheRestOfThePeriod) {
    RateLimit limit;
    UseUp(limit, kStart);
    EXPECT_FALSE(limit.Admit(kStart).has_value());
    EXPECT_FALSE(limit.Admit(kStart + RateLimit::kPeriod - std::chrono::milliseconds(1)).has_value());
}

TEST(RateLimit, TellsOnceHowManyWereDroppedWhenTheNextPeriodBegins) {
    RateLimit limit;
    UseUp(limit, kStart);
    limit.Admit(kStart);
    limit.Admit(kStart);
    EXPECT_EQ(limit.Admit(kStart + RateLimit::kPeriod), 2UL);
    EXPECT_EQ(limit.Admit(kStart + RateLimit::kPeriod), 0UL);
}

TEST(RateLimit, GivesAWholeBurstToEachPeriod) {
    RateLimit limit;
    UseUp(limit, kStart);
    UseUp(limit, kStart + RateLimit::kPeriod);
    EXPECT_FALSE(limit.Admit(kStart + RateLimit::kPeriod).has_value());
}
