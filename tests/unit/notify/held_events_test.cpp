#include "services/notify/channel/held_events.h"

#include <gtest/gtest.h>

namespace {

using qv_notify::Event;
using qv_notify::EventPtr;
using qv_notify::HeldEvents;

std::unique_ptr<Event> EventOfBytes(std::size_t bytes) {
    auto event = std::make_unique<Event>();
    event->bytes = bytes;
    return event;
}

TEST(HeldEventsTest, CountsAnEventOnceHoweverManyWaitForIt) {
    const auto account = std::make_shared<HeldEvents>();
    EventPtr event = HeldEvents::Hold(account, EventOfBytes(100));
    const std::vector<EventPtr> queues(50, event);
    EXPECT_EQ(account->Events(), 1U);
    EXPECT_EQ(account->Bytes(), 100U);
}

TEST(HeldEventsTest, CountsUntilTheLastOneLetsGo) {
    const auto account = std::make_shared<HeldEvents>();
    EventPtr one = HeldEvents::Hold(account, EventOfBytes(100));
    EventPtr other = one;
    EventPtr more = HeldEvents::Hold(account, EventOfBytes(11));
    EXPECT_EQ(account->Bytes(), 111U);
    one.reset();
    EXPECT_EQ(account->Events(), 2U);
    other.reset();
    EXPECT_EQ(account->Events(), 1U);
    EXPECT_EQ(account->Bytes(), 11U);
    more.reset();
    EXPECT_EQ(account->Events(), 0U);
}

TEST(HeldEventsTest, TheAccountStaysAsLongAsItsEvents) {
    auto account = std::make_shared<HeldEvents>();
    const std::weak_ptr<HeldEvents> lives = account;
    EventPtr event = HeldEvents::Hold(account, EventOfBytes(1));
    account.reset();
    EXPECT_FALSE(lives.expired());
    event.reset();
    EXPECT_TRUE(lives.expired());
}

}  // namespace
