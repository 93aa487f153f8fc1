// What a store that can't be written has heard of deliveries is written down as soon as it can be.
#include <gmock/gmock.h>

#include "tests/unit/notify/failing_store.h"

namespace {

using qv_notify::StoreError;
using testing::IsEmpty;
using testing::SizeIs;

class UndoneDeliveries : public testing::Test {
  protected:
    UndoneDeliveries() {
        for (std::int64_t& event : events) {
            event = failing.store.AddEvent("c1", "c1/sa0/p1", "octets", {});
            failing.store.Dispatch({{event, {kConsumer}}});
        }
        failing.FailToDeleteFrom("deliveries");
        EXPECT_THROW(failing.store.Done(kConsumer, {events[0]}), StoreError);
        EXPECT_THROW(failing.store.Done(kConsumer, {events[1]}), StoreError);
        EXPECT_THAT(failing.store.Events(), SizeIs(3));
    }

    static constexpr const char* kConsumer = "c1/ca0/p2";
    qv_notify_test::FailingStore failing;
    std::int64_t events[3]{};
};

TEST_F(UndoneDeliveries, AreWrittenWithTheNextOne) {
    failing.Mend();
    failing.store.Done(kConsumer, {events[2]});
    EXPECT_THAT(failing.store.Events(), IsEmpty());
}

TEST_F(UndoneDeliveries, AreWrittenWithThatOfAnotherConsumer) {
    failing.Mend();
    failing.store.Done("c1/none", {events[2]});
    EXPECT_THAT(failing.store.Events(), SizeIs(1));
}

TEST_F(UndoneDeliveries, AreWrittenAtAnOrderlyEnd) {
    failing.Mend();
    failing.store.NoteOrderlyEnd();
    EXPECT_THAT(failing.store.Events(), SizeIs(1));
    EXPECT_TRUE(failing.store.TakeOrderlyEnd());
}

TEST_F(UndoneDeliveries, LeaveAnEndThatIsNotOrderlyWhereTheyCanNotBeWritten) {
    EXPECT_THROW(failing.store.NoteOrderlyEnd(), StoreError);
    failing.Mend();
    EXPECT_FALSE(failing.store.TakeOrderlyEnd());
    failing.store.NoteOrderlyEnd();
    EXPECT_THAT(failing.store.Events(), SizeIs(1));
}

}  // namespace
