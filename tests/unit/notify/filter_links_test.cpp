#include "services/notify/model/filter_links.h"

#include <gmock/gmock.h>

#include "tests/unit/notify/channel_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::FilterLinks;
using testing::ElementsAre;
using testing::IsEmpty;

class FilterLinksTest : public ChannelTest {
  protected:
    const std::shared_ptr<qv_notify::FilterBody> filter = FilterOf("TRUE", 71);
    const std::shared_ptr<qv_notify::FilterBody> other = FilterOf("TRUE", 72);
    FilterLinks links;
};

TEST_F(FilterLinksTest, GiveIdsOfTheirOwn) {
    EXPECT_EQ(links.Add(filter), 1);
    EXPECT_EQ(links.Add(other), 2);
    EXPECT_EQ(links.Add(filter), 3) << "a filter may be added twice";
    EXPECT_THAT(links.Ids(), ElementsAre(1, 2, 3));
    EXPECT_EQ(links.Find(2), other);
    EXPECT_EQ(links.List().size(), 3U);
}

TEST_F(FilterLinksTest, GiveNoIdASecondTime) {
    links.Add(filter);
    EXPECT_TRUE(links.Remove(1));
    EXPECT_FALSE(links.Remove(1));
    EXPECT_EQ(links.Find(1), nullptr);
    EXPECT_EQ(links.Add(filter), 2);
    links.RemoveAll();
    EXPECT_THAT(links.Ids(), IsEmpty());
    EXPECT_EQ(links.Add(filter), 3);
}

TEST_F(FilterLinksTest, ShowNoFilterThatWasDestroyed) {
    links.Add(filter);
    links.Add(other);
    filter->Destroy();
    EXPECT_EQ(links.Find(1), nullptr);
    EXPECT_THAT(links.Ids(), ElementsAre(2));
    EXPECT_EQ(links.States().size(), 1U);
}

TEST_F(FilterLinksTest, ComeBackAsTheyWere) {
    links.Add(filter);
    links.Add(other);
    links.Remove(1);
    FilterLinks restored;
    restored.Restore(links.States(), links.NextId(), [&](std::int32_t id) {
        EXPECT_EQ(id, 72);
        return other;
    });
    EXPECT_THAT(restored.Ids(), ElementsAre(2));
    EXPECT_EQ(restored.Find(2), other);
    EXPECT_EQ(restored.Add(filter), 3);
}

TEST_F(FilterLinksTest, ComeBackWithoutFiltersThatAreGone) {
    links.Add(filter);
    FilterLinks restored;
    restored.Restore(links.States(), links.NextId(), [](std::int32_t) { return nullptr; });
    EXPECT_THAT(restored.Ids(), IsEmpty());
    EXPECT_EQ(restored.Add(other), 2) << "ids stay unique";
}

}  // namespace
