#include "services/notify/channel/routes.h"

#include <gmock/gmock.h>

#include "tests/unit/notify/channel_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::DestinationGroup;
using qv_notify::PassesBoth;
using qv_notify::Routes;
using qv_notify::TypeSet;
using testing::ElementsAre;
using testing::IsEmpty;

class RoutesTest : public ChannelTest {
  protected:
    std::vector<std::string> Find(const char* type, std::int32_t number) const {
        std::vector<std::string> paths;
        const auto groups = routes.Get();
        for (const qv_notify::Destination* found : Routes::Find(*groups, BodyOf(type, number))) {
            paths.push_back(found->path);
        }
        return paths;
    }
    DestinationGroup Group(bool and_operator, const char* admin, const char* proxy) {
        DestinationGroup group;
        group.and_operator = and_operator;
        if (admin != nullptr) {
            group.filters = {FilterOf(admin)};
        }
        group.members.push_back(DestinationOf(nullptr, "p"));
        if (proxy != nullptr) {
            group.members.back().filters = {FilterOf(proxy, 2)};
        }
        return group;
    }
    Routes routes;
};

TEST_F(RoutesTest, HaveNoDestinationsAtFirst) {
    EXPECT_THAT(Find("A", 1), IsEmpty());
}

TEST_F(RoutesTest, WithoutFiltersEachMemberGetsEachEvent) {
    for (const bool and_operator : {true, false}) {
        routes.Replace(0, Group(and_operator, nullptr, nullptr));
        EXPECT_THAT(Find("A", 1), ElementsAre("p"));
    }
}

TEST_F(RoutesTest, WithAndBothSidesHaveToPass) {
    routes.Replace(0, Group(true, "$number > 0", "$number < 10"));
    EXPECT_THAT(Find("A", 5), ElementsAre("p"));
    EXPECT_THAT(Find("A", 0), IsEmpty());
    EXPECT_THAT(Find("A", 10), IsEmpty());
}

TEST_F(RoutesTest, WithOrOneSideIsEnough) {
    routes.Replace(0, Group(false, "$number == 1", "$number == 2"));
    EXPECT_THAT(Find("A", 1), ElementsAre("p"));
    EXPECT_THAT(Find("A", 2), ElementsAre("p"));
    EXPECT_THAT(Find("A", 3), IsEmpty());
}

TEST_F(RoutesTest, ASideWithoutFiltersPasses) {
    routes.Replace(0, Group(true, nullptr, "$number == 2"));
    EXPECT_THAT(Find("A", 1), IsEmpty());
    EXPECT_THAT(Find("A", 2), ElementsAre("p"));
    routes.Replace(0, Group(false, nullptr, "$number == 2"));
    EXPECT_THAT(Find("A", 1), ElementsAre("p"));
}

TEST_F(RoutesTest, OfASupplierAreDecidedTheSameWay) {
    for (const bool and_operator : {true, false}) {
        for (const char* admin : {"$number == 1", "$number == 2"}) {
            for (const char* proxy : {"$number == 1", "$number == 2"}) {
                routes.Replace(0, Group(and_operator, admin, proxy));
                EXPECT_EQ(PassesBoth(and_operator, {FilterOf(admin)}, {FilterOf(proxy)}, BodyOf("A", 1)),
                          !Find("A", 1).empty())
                    << and_operator << admin << proxy;
            }
        }
    }
}

TEST_F(RoutesTest, AMemberGetsTheTypesOfItsSubscription) {
    DestinationGroup group = Group(true, nullptr, nullptr);
    group.members[0].types = TypeSet(std::vector<qv_notify::EventTypeName>{{"tmf", "A"}});
    routes.Replace(0, group);
    EXPECT_THAT(Find("A", 1), ElementsAre("p"));
    EXPECT_THAT(Find("B", 1), IsEmpty());
    group.and_operator = false;
    routes.Replace(0, group);
    EXPECT_THAT(Find("B", 1), IsEmpty()) << "an operator is about filters alone";
}

TEST_F(RoutesTest, AreReplacedAndRemovedGroupByGroup) {
    routes.Replace(0, Group(true, nullptr, nullptr));
    routes.Replace(1, Group(true, nullptr, nullptr));
    EXPECT_EQ(Find("A", 1).size(), 2U);
    routes.Replace(1, Group(true, "$number == 7", nullptr));
    EXPECT_EQ(Find("A", 1).size(), 1U);
    routes.Remove(0);
    routes.Remove(0);
    EXPECT_THAT(Find("A", 1), IsEmpty());
}

TEST_F(RoutesTest, AReaderKeepsWhatItSaw) {
    routes.Replace(0, Group(true, nullptr, nullptr));
    const auto before = routes.Get();
    routes.Remove(0);
    EXPECT_EQ(Routes::Find(*before, BodyOf("A", 1)).size(), 1U);
}

}  // namespace
