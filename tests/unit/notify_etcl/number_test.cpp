#include "services/notify/etcl/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using qv_notify::etcl::Number;

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

TEST(Number, IntegersAreExactBeyondSignAndSize) {
    EXPECT_TRUE(Number::Of(-1) < Number::OfUnsigned(kMost));
    EXPECT_FALSE(Number::Of(-1) == Number::OfUnsigned(kMost));
    EXPECT_TRUE(Number::OfUnsigned(kMost) - Number::OfUnsigned(kMost - 1) == Number::Of(1));
    EXPECT_TRUE(Number::Of(kLeast) + Number::OfUnsigned(kMost) ==
                Number::Of(std::numeric_limits<std::int64_t>::max()));
}

TEST(Number, BeyondSixtyFourBitsResultsAreReal) {
    EXPECT_FALSE((Number::OfUnsigned(kMost) + Number::Of(1)).IsWhole());
    EXPECT_FALSE((Number::OfUnsigned(kMost) * Number::OfUnsigned(kMost)).IsWhole());
    EXPECT_FALSE((Number::Of(kLeast) * Number::Of(kLeast)).IsWhole());
    EXPECT_FALSE((-Number::OfUnsigned(kMost)).IsWhole());
    EXPECT_TRUE((-Number::Of(kLeast)).IsWhole());
    EXPECT_TRUE((Number::OfUnsigned(kMost) * Number::Of(1)).IsWhole());
    EXPECT_DOUBLE_EQ((Number::OfUnsigned(kMost) * Number::OfUnsigned(kMost)).Real(), std::ldexp(1.0, 128));
}

TEST(Number, QuotientsOfIntegersAreIntegers) {
    Number quotient;
    ASSERT_TRUE(Number::Divide(Number::Of(-7), Number::Of(2), quotient));
    EXPECT_TRUE(quotient == Number::Of(-3));
    ASSERT_TRUE(Number::Divide(Number::Of(7), Number::OfReal(2), quotient));
    EXPECT_TRUE(quotient == Number::OfReal(3.5));
    ASSERT_TRUE(Number::Divide(Number::Of(kLeast), Number::Of(-1), quotient));
    EXPECT_TRUE(quotient == Number::OfUnsigned(1ULL << 63));
    EXPECT_FALSE(Number::Divide(Number::Of(1), Number::Of(0), quotient));
    EXPECT_FALSE(Number::Divide(Number::OfReal(1), Number::OfReal(-0.0), quotient));
}

TEST(Number, AFloatIsComparedWithALiteralInItsOwnPrecision) {
    const Number single = Number::OfSingle(0.1F);
    const Number literal = Number::OfReal(0.1).Weak();
    EXPECT_TRUE(single == literal);
    EXPECT_TRUE(-single == -literal);
    EXPECT_TRUE(single <= literal);
    EXPECT_FALSE(single < literal);
    EXPECT_FALSE(single == Number::OfReal(0.1));
    EXPECT_TRUE(single + single == Number::OfReal(0.2).Weak());
    EXPECT_FALSE(single == Number::OfReal(1e300).Weak());
    EXPECT_TRUE(single < Number::OfReal(1e300).Weak());
}

TEST(Number, WhatIsNoNumberEqualsNothing) {
    const Number none = Number::OfReal(std::nan(""));
    EXPECT_FALSE(none == none);
    EXPECT_FALSE(none < Number::Of(1));
    EXPECT_FALSE(none <= none);
}

}  // namespace
