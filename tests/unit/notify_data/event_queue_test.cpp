#include "services/notify/queue/event_queue.h"

#include <gmock/gmock.h>

#include "tests/unit/notify_data/queue_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::Discard;
using qv_notify::EventPtr;
using qv_notify::EventQueue;
using qv_notify::Order;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Sequence number, priority, deadline: 1 is urgent, 2 dull, 3 and 4 stay for ever.
std::vector<EventPtr> Four() {
    return {MakeEvent(1, 5, kNow + seconds(20)), MakeEvent(2, -5, kNow + seconds(10)), MakeEvent(3, 0),
            MakeEvent(4, 5)};
}

std::vector<std::int64_t> DeliveredBy(Order order) {
    EventQueue queue({order, Discard::kAny, 0});
    for (const EventPtr& event : Four()) {
        EXPECT_THAT(queue.Push(event), IsEmpty());
    }
    return PopAll(queue);
}

TEST(EventQueue, DeliversByTheOrderPolicy) {
    EXPECT_THAT(DeliveredBy(Order::kAny), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(DeliveredBy(Order::kFifo), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(DeliveredBy(Order::kPriority), ElementsAre(1, 4, 3, 2));
    EXPECT_THAT(DeliveredBy(Order::kDeadline), ElementsAre(2, 1, 3, 4));
}

std::vector<std::int64_t> DiscardedBy(Discard discard) {
    std::vector<std::int64_t> discarded;
    EventQueue queue({Order::kFifo, discard, 4});
    std::vector<EventPtr> events = Four();
    events.push_back(MakeEvent(5, 1, kNow + seconds(15)));
    events.push_back(MakeEvent(6, -6, kNow + seconds(30)));
    for (const EventPtr& event : events) {
        for (const EventPtr& gone : queue.Push(event)) {
            discarded.push_back(gone->sequence);
        }
    }
    EXPECT_EQ(queue.Size(), 4U);
    return discarded;
}

TEST(EventQueue, DiscardsByTheDiscardPolicy) {
    EXPECT_THAT(DiscardedBy(Discard::kAny), ElementsAre(1, 2));
    EXPECT_THAT(DiscardedBy(Discard::kFifo), ElementsAre(1, 2));
    EXPECT_THAT(DiscardedBy(Discard::kLifo), ElementsAre(5, 6));
    EXPECT_THAT(DiscardedBy(Discard::kPriority), ElementsAre(2, 6));
    EXPECT_THAT(DiscardedBy(Discard::kDeadline), ElementsAre(2, 5));
}

TEST(EventQueue, DiscardsTheOldestOfEquals) {
    for (const Discard discard : {Discard::kAny, Discard::kFifo, Discard::kPriority, Discard::kDeadline}) {
        EventQueue queue({Order::kPriority, discard, 2});
        queue.Push(MakeEvent(1));
        queue.Push(MakeEvent(2));
        EXPECT_THAT(SequencesOf(queue.Push(MakeEvent(3))), ElementsAre(1));
        EXPECT_THAT(PopAll(queue), ElementsAre(2, 3));
    }
}

TEST(EventQueue, EqualsKeepTheOrderOfPushWithoutNumbers) {
    EventQueue queue({Order::kPriority, Discard::kLifo, 3});
    std::vector<EventPtr> events;
    for (int i = 0; i < 4; ++i) {
        events.push_back(MakeEvent(0));
    }
    for (int i = 0; i < 3; ++i) {
        queue.Push(events[i]);
    }
    EXPECT_THAT(queue.Push(events[3]), ElementsAre(events[3]));
    std::vector<EventPtr> expired;
    const EventPtr first = queue.Pop(kNow, expired);
    const EventPtr second = queue.Pop(kNow, expired);
    EXPECT_EQ(first, events[0]);
    EXPECT_EQ(second, events[1]);
    queue.Return(second);
    queue.Return(first);
    EXPECT_THAT(queue.Clear(), ElementsAre(events[0], events[1], events[2]));
}

TEST(EventQueue, WhatIsReturnedComesInItsPlaceAgain) {
    EventQueue queue({Order::kPriority, Discard::kAny, 0});
    for (const EventPtr& event : Four()) {
        queue.Push(event);
    }
    std::vector<EventPtr> expired;
    const EventPtr first = queue.Pop(kNow, expired);
    queue.Push(MakeEvent(5, 5));
    queue.Push(MakeEvent(6, 6));
    EXPECT_THAT(queue.Return(first), IsEmpty());
    EXPECT_THAT(PopAll(queue), ElementsAre(6, 1, 4, 5, 3, 2));
}

TEST(EventQueue, WhatIsReturnedNeedsRoomAsWell) {
    EventQueue queue({Order::kFifo, Discard::kLifo, 2});
    queue.Push(MakeEvent(1));
    queue.Push(MakeEvent(2));
    std::vector<EventPtr> expired;
    const EventPtr first = queue.Pop(kNow, expired);
    queue.Push(MakeEvent(3));
    EXPECT_THAT(SequencesOf(queue.Return(first)), ElementsAre(3));
    EXPECT_THAT(PopAll(queue), ElementsAre(1, 2));
}

TEST(EventQueue, ExpiredEventsAreNotDelivered) {
    for (const Order order : {Order::kAny, Order::kFifo, Order::kPriority, Order::kDeadline}) {
        EventQueue queue({order, Discard::kAny, 0});
        for (const EventPtr& event : Four()) {
            queue.Push(event);
        }
        std::vector<EventPtr> expired;
        EXPECT_NE(queue.Pop(kNow + seconds(10) - std::chrono::nanoseconds(1), expired)->sequence, 0);
        EXPECT_THAT(expired, IsEmpty());
    }
    EventQueue queue({Order::kFifo, Discard::kAny, 0});
    for (const EventPtr& event : Four()) {
        queue.Push(event);
    }
    std::vector<EventPtr> expired;
    EXPECT_EQ(queue.Pop(kNow + seconds(20), expired)->sequence, 3);
    EXPECT_THAT(SequencesOf(expired), ElementsAre(2, 1));
    EXPECT_EQ(queue.Size(), 1U);
    queue.Push(MakeEvent(7, 0, kNow + seconds(30)));
    EXPECT_THAT(SequencesOf(queue.Expire(kNow + seconds(29))), IsEmpty());
    EXPECT_THAT(SequencesOf(queue.Expire(kNow + seconds(30))), ElementsAre(7));
}

TEST(EventQueue, PopOfNothingIsNull) {
    EventQueue queue({});
    std::vector<EventPtr> expired;
    EXPECT_EQ(queue.Pop(kNow, expired), nullptr);
    queue.Push(MakeEvent(1, 0, kNow));
    EXPECT_EQ(queue.Pop(kNow, expired), nullptr);
    EXPECT_EQ(expired.size(), 1U);
    EXPECT_TRUE(queue.Empty());
}

TEST(EventQueue, AnotherPolicySortsAndDiscardsAnew) {
    EventQueue queue({Order::kFifo, Discard::kFifo, 0});
    for (const EventPtr& event : Four()) {
        queue.Push(event);
    }
    EXPECT_THAT(SequencesOf(queue.SetPolicy({Order::kPriority, Discard::kPriority, 3})), ElementsAre(2));
    EXPECT_EQ(queue.Policy().max_events, 3U);
    EXPECT_THAT(PopAll(queue), ElementsAre(1, 4, 3));
}

TEST(EventQueue, KnowsTheMemoryOfItsEvents) {
    EventQueue queue({Order::kFifo, Discard::kFifo, 2});
    queue.Push(MakeEvent(1));  // of 10 bytes, 2 of 20, ...
    queue.Push(MakeEvent(2));
    EXPECT_EQ(queue.Bytes(), 30U);
    queue.Push(MakeEvent(3));
    EXPECT_EQ(queue.Bytes(), 50U);
    queue.SetPolicy({Order::kPriority, Discard::kFifo, 1});
    EXPECT_EQ(queue.Bytes(), 30U);
    PopAll(queue);
    EXPECT_EQ(queue.Bytes(), 0U);
}

}  // namespace
