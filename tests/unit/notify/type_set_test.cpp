#include "services/notify/channel/type_set.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "services/notify/store/description.h"
#include "tests/support/sanitized.h"

namespace {

using qv_notify::EventTypeName;
using qv_notify::Means;
using qv_notify::TypeSet;
using testing::ElementsAre;
using testing::IsEmpty;

CosNotification::StructuredEvent EventOfType(const char* domain, const char* type) {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup(domain);
    event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
    return event;
}

TEST(EventTypePattern, StandsForItself) {
    EXPECT_TRUE(Means({"tmf", "ALARM"}, "tmf", "ALARM"));
    EXPECT_FALSE(Means({"tmf", "ALARM"}, "tmf", "ALARMS"));
    EXPECT_FALSE(Means({"tmf", "ALARM"}, "tm", "ALARM"));
    EXPECT_FALSE(Means({"tmf", "ALARM"}, "tmf", ""));
}

TEST(EventTypePattern, NothingStarAndAllStandForEverything) {
    for (const char* all : {"", "*", "%ALL"}) {
        EXPECT_TRUE(Means({all, all}, "tmf", "ALARM")) << all;
        EXPECT_TRUE(Means({all, all}, "", "")) << all;
        EXPECT_FALSE(Means({all, "ALARM"}, "tmf", "OTHER")) << all;
    }
}

TEST(EventTypePattern, AStarStandsForAnyText) {
    EXPECT_TRUE(Means({"*", "NT_*"}, "tmf", "NT_ALARM"));
    EXPECT_TRUE(Means({"*", "NT_*"}, "tmf", "NT_"));
    EXPECT_FALSE(Means({"*", "NT_*"}, "tmf", "XNT_A"));
    EXPECT_TRUE(Means({"*", "*_CHANGE"}, "tmf", "A_CHANGE_CHANGE"));
    EXPECT_TRUE(Means({"*", "N*_*E"}, "tmf", "NT_TCA_CHANGE"));
    EXPECT_FALSE(Means({"*", "N*_*E"}, "tmf", "NT_TCA_CHANGES"));
}

TEST(EventTypePattern, ManyStarsTakeNoTime) {
    std::string pattern;
    for (int i = 0; i < 2000; ++i) {
        pattern += "*a";
    }
    EXPECT_FALSE(Means({"*", pattern + "b"}, "tmf", std::string(4000, 'a').c_str()));
}

TEST(TypeSetTest, MatchesWhatItHolds) {
    const TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}, {"tmf", "B*"}});
    EXPECT_TRUE(types.Matches(EventOfType("tmf", "A")));
    EXPECT_TRUE(types.Matches(EventOfType("tmf", "BC")));
    EXPECT_FALSE(types.Matches(EventOfType("tmf", "C")));
    EXPECT_FALSE(TypeSet().Matches(EventOfType("tmf", "A")));
    EXPECT_TRUE(TypeSet::All().Matches(EventOfType("tmf", "A")));
}

TEST(TypeSetTest, TheFirstTypesReplaceAll) {
    TypeSet types = TypeSet::All();
    const TypeSet::Change change = types.Apply({{"tmf", "A"}}, {});
    EXPECT_THAT(types.Types(), ElementsAre(EventTypeName{"tmf", "A"}));
    EXPECT_THAT(change.added, ElementsAre(EventTypeName{"tmf", "A"}));
    EXPECT_THAT(change.removed, ElementsAre(EventTypeName{"*", "*"}));
}

TEST(TypeSetTest, AllReplacesTheTypes) {
    TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}});
    EXPECT_FALSE(types.Apply({{"", "%ALL"}}, {}).Empty());
    EXPECT_THAT(types.Types(), ElementsAre(EventTypeName{"*", "*"}));
}

TEST(TypeSetTest, ATypeIsHeldOnce) {
    TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}});
    EXPECT_TRUE(types.Apply({{"tmf", "A"}}, {}).Empty());
    EXPECT_EQ(types.Types().size(), 1U);
}

TEST(TypeSetTest, RemovesTypes) {
    TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}, {"tmf", "B"}});
    const TypeSet::Change change = types.Apply({}, {{"tmf", "A"}, {"tmf", "X"}});
    EXPECT_THAT(types.Types(), ElementsAre(EventTypeName{"tmf", "B"}));
    EXPECT_THAT(change.removed, ElementsAre(EventTypeName{"tmf", "A"}));
    EXPECT_THAT(change.added, IsEmpty());
}

TEST(TypeSetTest, AllCanBeRemovedInAnySpelling) {
    TypeSet types = TypeSet::All();
    EXPECT_FALSE(types.Apply({}, {{"", ""}}).Empty());
    EXPECT_THAT(types.Types(), IsEmpty());
}

TEST(TypeSetTest, RemovesFirstAndAddsThen) {
    TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}});
    EXPECT_TRUE(types.Apply({{"tmf", "A"}}, {{"tmf", "A"}}).Empty());
    EXPECT_THAT(types.Types(), ElementsAre(EventTypeName{"tmf", "A"}));
}

// Quadratic time would be minutes here.
TEST(TypeSetTest, ManyTypesTakeLittleTime) {
    std::vector<EventTypeName> many;
    for (int i = 0; i < (qv_test::kSanitized ? 10000 : 100000); ++i) {
        many.push_back({"a domain that all of them share", std::to_string(i)});
    }
    const auto start = std::chrono::steady_clock::now();
    TypeSet types(std::vector<EventTypeName>{{"tmf", "A"}});
    EXPECT_EQ(types.Apply(many, {}).added.size(), many.size());
    EXPECT_TRUE(types.Apply(many, {}).Empty());
    EXPECT_EQ(types.Apply({}, many).removed.size(), many.size());
    EXPECT_THAT(types.Types(), ElementsAre(EventTypeName{"tmf", "A"}));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TypeSetTest, BecomesASequenceAndComesBack) {
    const std::vector<EventTypeName> names{{"tmf", "A"}, {"", "B"}};
    const CosNotification::EventTypeSeq_var sequence = qv_notify::SequenceOf(names);
    EXPECT_EQ(qv_notify::NamesOf(sequence.in()), names);
}

}  // namespace
