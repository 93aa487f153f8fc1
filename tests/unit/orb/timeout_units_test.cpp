#include "timeout_units.h"

#include <gtest/gtest.h>

namespace {

using qv_orb::Milliseconds;

TEST(TimeoutUnits, AreRoundedUpToWholeMilliseconds) {
    EXPECT_EQ(0u, Milliseconds(0));
    EXPECT_EQ(1u, Milliseconds(1));
    EXPECT_EQ(1u, Milliseconds(10000));
    EXPECT_EQ(2u, Milliseconds(10001));
    EXPECT_EQ(86400000u, Milliseconds(864000000000u));  // a day
}

TEST(TimeoutUnits, StayWithinTheRangeOfTheOrb) {
    constexpr std::uint64_t kLongest = INT32_MAX;
    EXPECT_EQ(kLongest - 1, Milliseconds((kLongest - 1) * 10000));
    EXPECT_EQ(kLongest, Milliseconds(kLongest * 10000 + 1));
    EXPECT_EQ(kLongest, Milliseconds(UINT64_MAX));
}

}  // namespace
