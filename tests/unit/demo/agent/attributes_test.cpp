#include "demo/agent/core/attributes.h"

#include <gtest/gtest.h>

namespace qv_demo {
namespace {

using Result = Attributes::SetResult;

TEST(Attributes, HoldEachKindOfValueAndReplaceByName) {
    Attributes attributes;
    EXPECT_EQ(attributes.Set({{"note", std::string("first")}, {"limit", 70}, {"locked", true}}),
              Result::kSet);
    EXPECT_EQ(attributes.Set({{"note", false}}), Result::kSet);
    EXPECT_EQ(attributes.all().size(), 3U);
    ASSERT_NE(attributes.Find("note"), nullptr);
    EXPECT_EQ(*attributes.Find("note"), AttributeValue(false));
    EXPECT_EQ(*attributes.Find("limit"), AttributeValue(70));
    EXPECT_EQ(attributes.Find("Note"), nullptr);
}

TEST(Attributes, AreSetAllOrNotAtAll) {
    Attributes attributes;
    EXPECT_EQ(attributes.Set({{"a", 1}, {"", 2}}), Result::kBadName);
    EXPECT_EQ(attributes.Set({{"a", 1}, {std::string(65, 'n'), 2}}), Result::kBadName);
    EXPECT_EQ(attributes.Set({{"a", 1}, {"b", std::string(1025, 'x')}}), Result::kLongText);
    EXPECT_TRUE(attributes.all().empty());
    EXPECT_EQ(attributes.Set({{std::string(64, 'n'), std::string(1024, 'x')}}), Result::kSet);
}

TEST(Attributes, HaveALimit) {
    Attributes attributes;
    std::vector<Attribute> many;
    for (std::size_t i = 0; i < Attributes::kMost; ++i) {
        many.emplace_back("a" + std::to_string(i), 1);
    }
    EXPECT_EQ(attributes.Set(many), Result::kSet);
    EXPECT_EQ(attributes.Set({{"one more", 1}}), Result::kTooMany);
    EXPECT_EQ(attributes.Set({{"a7", 2}}), Result::kSet) << "a change needs no place";
}

}  // namespace
}  // namespace qv_demo
