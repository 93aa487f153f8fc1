#include "services/notify/channel/channel_traffic.h"

#include <gmock/gmock.h>

#include "services/notify/properties/admin_properties.h"
#include "services/notify/properties/qos.h"
#include "tests/unit/notify/channel_fixture.h"
#include "tests/unit/notify/failing_store.h"

namespace {

using namespace std::chrono_literals;
using namespace qv_notify_test;
using qv_notify::ChannelLimits;
using qv_notify::ChannelTraffic;
using qv_test::WaitFor;
using testing::ElementsAre;

class ChannelTrafficTest : public ChannelTest {
  protected:
    ~ChannelTrafficTest() override { intake_pool.Stop(); }

    std::unique_ptr<ChannelTraffic> MakeTraffic(qv_notify::Store* store = nullptr,
                                                ChannelLimits limits = {}) {
        ChannelTraffic::Surroundings around;
        around.intake_pool = &intake_pool;
        around.store = store;
        around.log = &log;
        around.limits = limits;
        auto traffic = std::make_unique<ChannelTraffic>("c1", around);
        traffic->SetProperties(qos, admin);
        feed = MakeFeed("c1/ca0/p2");
        qv_notify::DestinationGroup group;
        group.members.push_back(DestinationOf(feed, "c1/ca0/p2"));
        traffic->Destinations().Replace(0, std::move(group));
        return traffic;
    }
    void Accept(ChannelTraffic& traffic, int number) {
        traffic.Accept(BodyOf("A", number), "c1/sa0/p1", qos);
    }
    void AcceptAndWait(ChannelTraffic& traffic, int number) {
        Accept(traffic, number);
        ASSERT_TRUE(WaitFor([&] { return traffic.IntakeDepth() == 0; }));
        intake_pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s);
    }
    std::vector<int> Deliver(std::size_t count) {
        const auto consumer = std::make_shared<NumberPort>();
        feed->Connect(consumer);
        EXPECT_TRUE(WaitFor([&] { return consumer->Numbers().size() >= count; }));
        return consumer->Numbers();
    }

    qv_notify::PropertyValues qos = qv_notify::DefaultQos();
    qv_notify::PropertyValues admin = qv_notify::DefaultAdmin();
    std::shared_ptr<qv_notify::Feed> feed;
    qv_notify::WorkPool intake_pool{2};
};

TEST_F(ChannelTrafficTest, LetsEventsThrough) {
    const auto traffic = MakeTraffic();
    for (int number = 1; number <= 3; ++number) {
        Accept(*traffic, number);
    }
    EXPECT_THAT(Deliver(3), ElementsAre(1, 2, 3));
    EXPECT_TRUE(WaitFor([&] { return traffic->Held().Events() == 0; }));
    EXPECT_EQ(traffic->Held().Bytes(), 0U);
}

TEST_F(ChannelTrafficTest, RejectsEventsWhenItIsFullAndWasToldTo) {
    admin[CosNotification::MaxQueueLength] = std::int32_t{3};
    admin[CosNotification::RejectNewEvents] = true;
    const auto traffic = MakeTraffic();
    for (int number = 1; number <= 3; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_THROW(Accept(*traffic, 4), CORBA::IMP_LIMIT);
    EXPECT_EQ(Told("rejects new events with IMP_LIMIT"), 1U);
    EXPECT_THAT(Deliver(3), ElementsAre(1, 2, 3));
    ASSERT_TRUE(WaitFor([&] { return traffic->Held().Events() == 0; }));
    EXPECT_NO_THROW(Accept(*traffic, 5));
}

TEST_F(ChannelTrafficTest, DiscardsByThePolicyOtherwise) {
    admin[CosNotification::MaxQueueLength] = std::int32_t{3};
    const auto traffic = MakeTraffic();
    for (int number = 1; number <= 5; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_EQ(traffic->Held().Events(), 3U);
    EXPECT_EQ(feed->Counts().discarded, 2U);
    EXPECT_EQ(Told("its channel is full"), 2U);
    EXPECT_THAT(Deliver(3), ElementsAre(3, 4, 5));
}

TEST_F(ChannelTrafficTest, HoldsTheLimitOfTheServiceWithoutOneOfItsOwn) {
    const auto traffic = MakeTraffic(nullptr, ChannelLimits{2, 0});
    for (int number = 1; number <= 4; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_EQ(traffic->Held().Events(), 2U);
}

TEST_F(ChannelTrafficTest, TheStricterLimitHolds) {
    admin[CosNotification::MaxQueueLength] = std::int32_t{100};
    const auto traffic = MakeTraffic(nullptr, ChannelLimits{2, 0});
    for (int number = 1; number <= 4; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_EQ(traffic->Held().Events(), 2U);
}

TEST_F(ChannelTrafficTest, HoldsTheLimitOfMemory) {
    const std::size_t each = qv_notify::MemoryOf(BodyOf("A", 1));
    const auto traffic = MakeTraffic(nullptr, ChannelLimits{0, 3 * each});
    for (int number = 1; number <= 6; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_EQ(traffic->Held().Bytes(), 3 * each);
    EXPECT_THAT(Deliver(3), ElementsAre(4, 5, 6));
}

TEST_F(ChannelTrafficTest, WhatIsDiscardedComesFromTheLongestQueue) {
    admin[CosNotification::MaxQueueLength] = std::int32_t{4};
    const auto traffic = MakeTraffic();
    const auto brief = MakeFeed("c1/ca1/p3");
    qv_notify::DestinationGroup group;
    group.members.push_back(DestinationOf(brief, "c1/ca1/p3", {FilterOf("$number == 4")}));
    traffic->Destinations().Replace(1, std::move(group));
    for (int number = 1; number <= 6; ++number) {
        AcceptAndWait(*traffic, number);
    }
    EXPECT_EQ(feed->Counts().discarded, 2U);
    EXPECT_EQ(brief->Counts().discarded, 0U);
    EXPECT_EQ(brief->Depth(), 1U);
}

TEST_F(ChannelTrafficTest, KeepsEventsWhereThatIsWanted) {
    FailingStore failing;
    qos[CosNotification::EventReliability] = std::int16_t{CosNotification::Persistent};
    const auto traffic = MakeTraffic(&failing.store);
    Accept(*traffic, 1);
    EXPECT_EQ(failing.store.Events().size(), 1U);
    EXPECT_THAT(Deliver(1), ElementsAre(1));
    EXPECT_TRUE(WaitFor([&] { return !Done().empty(); }));
}

TEST_F(ChannelTrafficTest, RefusesWhatItCannotKeep) {
    FailingStore failing;
    qos[CosNotification::EventReliability] = std::int16_t{CosNotification::Persistent};
    const auto traffic = MakeTraffic(&failing.store);
    failing.FailToInsertInto("events");
    EXPECT_THROW(Accept(*traffic, 1), CORBA::NO_RESOURCES);
    EXPECT_EQ(Told("refused with NO_RESOURCES"), 1U);
    EXPECT_EQ(traffic->Held().Events(), 0U);
    failing.Mend();
    EXPECT_NO_THROW(Accept(*traffic, 2));
    EXPECT_THAT(Deliver(1), ElementsAre(2));
}

// Numbers of the store and of events that it doesn't have must neither be mixed up nor change the order.
TEST_F(ChannelTrafficTest, EventsThatAreNotKeptStayInTheirPlaceAmongThoseThatAre) {
    FailingStore failing;
    for (int i = 0; i < 40; ++i) {
        failing.store.AddEvent("c1", "c1/sa0/p1", "octets", std::chrono::system_clock::now());
    }
    qos[CosNotification::EventReliability] = std::int16_t{CosNotification::Persistent};
    const auto traffic = MakeTraffic(&failing.store);
    std::vector<int> numbers;
    for (int number = 1; number <= 20; ++number) {
        CosNotification::StructuredEvent event = BodyOf("A", number);
        if (number % 3 != 0) {
            event.header.variable_header.length(1);
            event.header.variable_header[0].name = CORBA::string_dup(CosNotification::EventReliability);
            event.header.variable_header[0].value <<= CORBA::Short{CosNotification::BestEffort};
        }
        traffic->Accept(event, "c1/sa0/p1", qos);
        numbers.push_back(number);
    }
    ASSERT_TRUE(WaitFor([&] { return feed->Depth() == 20; }));
    EXPECT_EQ(Deliver(20), numbers);
    ASSERT_TRUE(WaitFor([&] { return Done().size() == 6; }));
    for (const std::int64_t sequence : Done()) {
        EXPECT_GT(sequence, 40);
    }
}

TEST_F(ChannelTrafficTest, TheSettingsOfTheSupplierCountForItsEvents) {
    const auto traffic = MakeTraffic();
    policy.order = qv_notify::Order::kPriority;
    feed->SetPolicy(policy);
    Accept(*traffic, 1);
    qv_notify::PropertyValues urgent = qos;
    urgent[CosNotification::Priority] = std::int16_t{7};
    traffic->Accept(BodyOf("A", 2), "c1/sa0/p9", urgent);
    ASSERT_TRUE(WaitFor([&] { return feed->Depth() == 2; }));
    EXPECT_THAT(Deliver(2), ElementsAre(2, 1));
}

TEST_F(ChannelTrafficTest, BringsBackEventsForThoseThatStillWaitForThem) {
    FailingStore failing;
    qos[CosNotification::EventReliability] = std::int16_t{CosNotification::Persistent};
    const auto traffic = MakeTraffic(&failing.store);
    for (int number = 1; number <= 2; ++number) {
        AcceptAndWait(*traffic, number);
    }
    traffic->Close();
    const auto kept = failing.store.Events();
    ASSERT_EQ(kept.size(), 2U);
    const auto again = MakeTraffic(&failing.store);
    const std::vector<std::shared_ptr<qv_notify::Feed>> feeds{feed};
    again->Restore(kept[0], qos, &feeds);
    again->Restore(kept[1], qos, nullptr);
    EXPECT_EQ(again->Held().Events(), 2U);
    EXPECT_THAT(Deliver(2), ElementsAre(1, 2));
}

TEST_F(ChannelTrafficTest, ClosedItTakesNothing) {
    const auto traffic = MakeTraffic();
    traffic->Close();
    Accept(*traffic, 1);
    intake_pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s);
    EXPECT_EQ(feed->Depth(), 0U);
    EXPECT_EQ(traffic->Held().Events(), 0U);
}

/// A channel whose first event is kept and doesn't get through, as the store can't be written.
class StuckIntake : public ChannelTrafficTest {
  protected:
    StuckIntake() { qos[CosNotification::EventReliability] = std::int16_t{CosNotification::Persistent}; }
    ~StuckIntake() override {  // while there is the store
        intake_pool.Stop();
        intake_pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s);
    }
    /// Two events wait for the consumer, and `kept` ones in front of it.
    std::unique_ptr<ChannelTraffic> MakeStuck(int kept, std::size_t limit) {
        auto traffic = MakeTraffic(&failing.store, ChannelLimits{limit, 0});
        AcceptAndWait(*traffic, 1);
        AcceptAndWait(*traffic, 2);
        failing.FailToInsertInto("deliveries");
        for (int i = 0; i < kept; ++i) {
            Accept(*traffic, 3 + i);
        }
        EXPECT_TRUE(WaitFor([&] { return Told("wait until it works again") >= 1; }));
        return traffic;
    }
    void AcceptUnkept(ChannelTraffic& traffic, int number) {
        CosNotification::StructuredEvent event = BodyOf("A", number);
        event.header.variable_header.length(1);
        event.header.variable_header[0].name = CORBA::string_dup(CosNotification::EventReliability);
        event.header.variable_header[0].value <<= CORBA::Short{CosNotification::BestEffort};
        traffic.Accept(event, "c1/sa0/p1", qos);
    }

    FailingStore failing;
};

TEST_F(StuckIntake, IsBoundedAndSparesTheQueuesOfConsumers) {
    const auto traffic = MakeStuck(1, 10);
    for (int number = 4; number <= 50; ++number) {
        AcceptUnkept(*traffic, number);
    }
    // What is in the batch that is tried once a second can't be dropped right then.
    EXPECT_LE(traffic->Held().Events(), 20U);
    EXPECT_EQ(feed->Counts().discarded, 0U);
    EXPECT_EQ(feed->Depth(), 2U);
    EXPECT_GE(Told("was dropped before it was handed to consumers"), 1U);
    failing.Mend();
    ASSERT_TRUE(WaitFor([&] { return traffic->IntakeDepth() == 0; }));
    const std::vector<int> delivered = Deliver(feed->Depth());
    EXPECT_EQ((std::vector<int>(delivered.begin(), delivered.begin() + 3)), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(delivered.back(), 50);
}

TEST_F(StuckIntake, FullOfKeptEventsItRejectsMore) {
    const auto traffic = MakeStuck(8, 10);
    EXPECT_THROW(
        {
            // Not while the batch is tried.
            for (int i = 0; i < 5; ++i) {
                Accept(*traffic, 100);
            }
        },
        CORBA::IMP_LIMIT);
    EXPECT_EQ(Told("until those that are kept have been handed to its consumers"), 1U);
    EXPECT_EQ(feed->Counts().discarded, 0U);
    failing.Mend();
    ASSERT_TRUE(WaitFor([&] { return traffic->IntakeDepth() == 0; }));
    EXPECT_EQ(feed->Depth(), traffic->Held().Events());
    Deliver(10);
    ASSERT_TRUE(WaitFor([&] { return traffic->Held().Events() == 0; }));
    EXPECT_NO_THROW(Accept(*traffic, 200));
}

}  // namespace
