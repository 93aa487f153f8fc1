#include "platform/name_value.h"

#include <gtest/gtest.h>

using NS_BUNDLEMGR1::GetValByKey;
using NS_BUNDLEMGR1::NameValueStru;

TEST(GetValByKey, FindsAnExactName) {
    const std::vector<NameValueStru> items = {{"a", "1"}, {"b", ""}};
    std::string value = "before";
    EXPECT_TRUE(GetValByKey(value, "b", items));
    EXPECT_EQ(value, "");
    EXPECT_TRUE(GetValByKey(value, "a", items));
    EXPECT_EQ(value, "1");
}

TEST(GetValByKey, LeavesTheValueAloneWithoutTheKey) {
    const std::vector<NameValueStru> items = {{"a", "1"}};
    std::string value = "before";
    EXPECT_FALSE(GetValByKey(value, "A", items));
    EXPECT_FALSE(GetValByKey(value, "", items));
    EXPECT_FALSE(GetValByKey(value, "a", {}));
    EXPECT_EQ(value, "before");
}

TEST(GetValByKey, TakesTheFirstOfEqualNames) {
    std::string value;
    EXPECT_TRUE(GetValByKey(value, "a", {{"a", "first"}, {"a", "second"}}));
    EXPECT_EQ(value, "first");
}
