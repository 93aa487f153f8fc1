#include "services/notify/channel/filter_body.h"

#include "tests/unit/notify/channel_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::FilterBody;
using qv_notify::FilterList;
using qv_notify::PassesOneOf;
using qv_notify::etcl::Constraint;

class FilterBodyTest : public ChannelTest {};

TEST_F(FilterBodyTest, WithoutConstraintsNothingPasses) {
    const FilterBody filter(1, "c1/f1", false);
    EXPECT_FALSE(filter.Passes(BodyOf("A", 1)));
}

TEST_F(FilterBodyTest, OneConstraintThatHoldsIsEnough) {
    FilterBody filter(1, "c1/f1", false);
    filter.Set({{1, {}, Constraint::Parse("$number == 1")}, {2, {}, Constraint::Parse("$number == 2")}});
    EXPECT_TRUE(filter.Passes(BodyOf("A", 2)));
    EXPECT_FALSE(filter.Passes(BodyOf("A", 3)));
}

TEST_F(FilterBodyTest, AConstraintIsAboutItsTypes) {
    const auto filter = FilterOf("$number == 1", 1, {{"tmf", "A"}, {"*", "B*"}});
    EXPECT_TRUE(filter->Passes(BodyOf("A", 1)));
    EXPECT_TRUE(filter->Passes(BodyOf("BX", 1)));
    EXPECT_FALSE(filter->Passes(BodyOf("C", 1)));
    EXPECT_FALSE(filter->Passes(BodyOf("A", 2)));
}

TEST_F(FilterBodyTest, WhatCannotBeEvaluatedDoesNotPass) {
    EXPECT_FALSE(FilterOf("$missing == 1")->Passes(BodyOf("A", 1)));
}

TEST_F(FilterBodyTest, WithoutFiltersEverythingPasses) {
    EXPECT_TRUE(PassesOneOf({}, BodyOf("A", 1)));
}

TEST_F(FilterBodyTest, OneOfSeveralFiltersIsEnough) {
    const FilterList filters{FilterOf("$number == 1"), FilterOf("$number == 2", 2)};
    EXPECT_TRUE(PassesOneOf(filters, BodyOf("A", 1)));
    EXPECT_TRUE(PassesOneOf(filters, BodyOf("A", 2)));
    EXPECT_FALSE(PassesOneOf(filters, BodyOf("A", 3)));
}

TEST_F(FilterBodyTest, ADestroyedFilterCountsAsRemoved) {
    const auto filter = FilterOf("$number == 1");
    const auto other = FilterOf("$number == 2", 2);
    filter->Destroy();
    EXPECT_TRUE(filter->Destroyed());
    EXPECT_TRUE(PassesOneOf({filter}, BodyOf("A", 3))) << "no filter is left";
    EXPECT_FALSE(PassesOneOf({filter, other}, BodyOf("A", 1)));
}

}  // namespace
