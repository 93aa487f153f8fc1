#include "platform/text.h"

#include <gtest/gtest.h>

TEST(IsDigit, IsTrueForDigitsAlone) {
    EXPECT_TRUE(NS_UTIL::IsDigit("0"));
    EXPECT_TRUE(NS_UTIL::IsDigit("20241231235958"));
    for (const char* const text : {"", " ", "-1", "1.0", "1 ", "a", "12a", "\xb2"}) {
        EXPECT_FALSE(NS_UTIL::IsDigit(text)) << text;
    }
    EXPECT_FALSE(NS_UTIL::IsDigit(std::string("1\0", 2)));
}
