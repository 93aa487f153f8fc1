// PushEvents' own way of pushing. A program of its own: the ways are fixed at the first event.
#include "tests/unit/notification/counted_semaphore.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

class WayOfPushing : public SupplierTest {
  protected:
    WayOfPushing() : SupplierTest({{"bSingleThreadPushEvent", "1"}}) {}

    void Set(bool singleThread) {
        m_items.Set("bSingleThreadPushEvent", singleThread ? "1" : "0");
        config().GetOption();
        ASSERT_EQ(singleThread, config().IsSingleThreadPushEvent());
    }
    /// How often the lock is taken for three events at once: 3 by a loop of single pushes, 1 by a batch.
    int TakenForThreeEvents() {
        std::vector<StructuredEvent> events(3, MakeEvent("NT_TCA"));
        const CountedSemaphore semaphore;
        EXPECT_EQ(0, manager->PushEvents(events));
        EXPECT_EQ(semaphore.Taken(), semaphore.Given());
        return semaphore.Taken();
    }
};

TEST_F(WayOfPushing, OfManyEventsIsFixedAtTheFirstOfThemAndNotByASingleEvent) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_TCA");
    EXPECT_EQ(0, manager->PushEvent(event));  // which fixes its own way
    Set(false);
    EXPECT_EQ(3, TakenForThreeEvents());
    Set(true);
    EXPECT_EQ(3, TakenForThreeEvents());
    EXPECT_EQ(7u, service->Events().size());
}

}  // namespace
}  // namespace qv_test
