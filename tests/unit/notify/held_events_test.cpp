#include "services/notify/channel/held_events.h"
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

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

std::size_t ResidentBytes() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(HeldEventsTest, ALargeBacklogGivesItsMemoryBackWhenItHasGone) {
    if (qv_test::kSanitized) {
        GTEST_SKIP() << "sanitizers have a heap of their own";
    }
    constexpr std::size_t kBytes = 2000;
    constexpr std::size_t kEvents = 100000;
    const auto account = std::make_shared<HeldEvents>();
    std::vector<EventPtr> backlog;
    backlog.reserve(kEvents);
    std::vector<std::unique_ptr<std::string>> between;  // what else lives, spread over the heap
    const std::size_t before = ResidentBytes();
    for (std::size_t i = 0; i < kEvents; ++i) {
        auto event = EventOfBytes(kBytes);
        event->body.header.fixed_header.event_name = std::string(kBytes, 'x').c_str();
        backlog.push_back(HeldEvents::Hold(account, std::move(event)));
        if (i % 100 == 0) {
            between.push_back(std::make_unique<std::string>(100, 'y'));
        }
    }
    const std::size_t grown = ResidentBytes() - before;
    ASSERT_GT(grown, kEvents * kBytes);
    backlog.clear();
    EXPECT_LT(ResidentBytes(), before + grown / 4);
}

}  // namespace
