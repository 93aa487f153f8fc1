#include "standalone/lockout.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using qv_standalone::Lockout;

TEST(Lockout, HoldsABoundedNumberOfNamesAndForgetsTheOldest) {
    Lockout lockout(1, 100s);
    const Lockout::Time start{1000s};
    for (std::size_t i = 0; i <= Lockout::kMostNames; ++i) {
        lockout.Failed(std::to_string(i), start + std::chrono::milliseconds(i));
    }
    EXPECT_EQ(lockout.Names(), Lockout::kMostNames);
    EXPECT_FALSE(lockout.IsLocked("0", start + 20s));
    EXPECT_TRUE(lockout.IsLocked("1", start + 20s));
    lockout.Failed("late", start + 1000s);
    EXPECT_EQ(lockout.Names(), 1U);
}

TEST(Lockout, AFailureCountsOnlyForTheLockTime) {
    Lockout lockout(2, 10s);
    const Lockout::Time start{1000s};
    EXPECT_FALSE(lockout.Failed("a", start));
    EXPECT_FALSE(lockout.Failed("a", start + 10s));
    EXPECT_FALSE(lockout.IsLocked("a", start + 10s));
    EXPECT_TRUE(lockout.Failed("a", start + 19s));
    EXPECT_TRUE(lockout.IsLocked("a", start + 28s));
    EXPECT_FALSE(lockout.IsLocked("a", start + 29s));
}
