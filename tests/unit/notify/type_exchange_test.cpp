#include "services/notify/model/type_exchange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "services/notify/store/description.h"

namespace {

using qv_notify::EventTypeName;
using qv_notify::TypeExchange;
using qv_notify::TypeSet;
using testing::ElementsAre;
using testing::IsEmpty;

const EventTypeName kA{"tmf", "A"};
const EventTypeName kB{"tmf", "B"};

TEST(TypeExchangeTest, TellsWhatIsNewForTheWhole) {
    TypeExchange types;
    EXPECT_THAT(types.Set("one", {kA}).added, ElementsAre(kA));
    const TypeSet::Change change = types.Set("other", {kA, kB});
    EXPECT_THAT(change.added, ElementsAre(kB));
    EXPECT_THAT(change.removed, IsEmpty());
    EXPECT_THAT(types.All(), ElementsAre(kA, kB));
}

TEST(TypeExchangeTest, ATypeIsOfferedAsLongAsSomebodyDoes) {
    TypeExchange types;
    types.Set("one", {kA});
    types.Set("other", {kA});
    EXPECT_TRUE(types.Remove("one").Empty());
    EXPECT_THAT(types.Remove("other").removed, ElementsAre(kA));
    EXPECT_THAT(types.All(), IsEmpty());
}

TEST(TypeExchangeTest, WhatAnObjectNamesReplacesWhatItNamed) {
    TypeExchange types;
    types.Set("one", {kA});
    const TypeSet::Change change = types.Set("one", {kB});
    EXPECT_THAT(change.added, ElementsAre(kB));
    EXPECT_THAT(change.removed, ElementsAre(kA));
    EXPECT_TRUE(types.Set("one", {kB}).Empty());
    EXPECT_TRUE(types.Remove("nobody").Empty());
}

// Quadratic time would be minutes here.
TEST(TypeExchangeTest, ManyTypesTakeLittleTime) {
    std::vector<EventTypeName> many;
    for (int i = 0; i < 100000; ++i) {
        many.push_back({"a domain that all of them share", std::to_string(i)});
    }
    const auto start = std::chrono::steady_clock::now();
    TypeExchange types;
    EXPECT_EQ(types.Set("one", many).added.size(), many.size());
    EXPECT_TRUE(types.Set("other", many).Empty());
    EXPECT_TRUE(types.Remove("one").Empty());
    EXPECT_EQ(types.Remove("other").removed.size(), many.size());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
