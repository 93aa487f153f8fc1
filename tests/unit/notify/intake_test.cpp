#include "services/notify/channel/intake.h"

#include <gmock/gmock.h>

#include "tests/unit/notify/channel_fixture.h"
#include "tests/unit/notify/failing_store.h"

namespace {

using namespace std::chrono_literals;
using namespace qv_notify_test;
using qv_notify::EventPtr;
using qv_notify::Intake;
using qv_notify::Routes;
using qv_test::WaitFor;
using testing::ElementsAre;

EventPtr EventWith(std::int32_t number, std::int64_t sequence, bool kept) {
    auto event = std::make_shared<qv_notify::Event>();
    event->body = BodyOf("A", number);
    event->sequence = sequence;
    event->kept = kept;
    event->arrived = std::chrono::system_clock::now();
    return event;
}

class IntakeTest : public ChannelTest {
  protected:
    std::shared_ptr<NumberPort> AddConsumers(int count, const char* filter = nullptr) {
        const auto consumer = std::make_shared<NumberPort>();
        qv_notify::DestinationGroup group;
        for (int i = 0; i < count; ++i) {
            feeds.push_back(MakeFeed("c1/ca0/p2"));
            feeds.back()->Connect(i == 0 ? consumer : std::make_shared<NumberPort>());
            group.members.push_back(DestinationOf(feeds.back(), "c1/ca0/p2"));
            if (filter != nullptr) {
                group.members.back().filters = {FilterOf(filter)};
            }
        }
        routes->Replace(next_admin++, std::move(group));
        return consumer;
    }
    std::shared_ptr<Intake> MakeIntake(qv_notify::Store* store = nullptr) {
        return std::make_shared<Intake>("c1", routes, intake_pool, store, log);
    }
    ~IntakeTest() override { intake_pool.Stop(); }

    const std::shared_ptr<Routes> routes = std::make_shared<Routes>();
    std::vector<std::shared_ptr<qv_notify::Feed>> feeds;
    std::int32_t next_admin = 0;
    qv_notify::WorkPool intake_pool{2};
};

TEST_F(IntakeTest, HandsEventsOnInOrder) {
    for (const int consumers : {1, 20}) {
        const auto consumer = AddConsumers(consumers);
        const auto intake = MakeIntake();
        std::vector<int> numbers;
        for (int number = 1; number <= 300; ++number) {
            intake->Add(EventWith(number, number, false));
            numbers.push_back(number);
        }
        ASSERT_TRUE(WaitFor([&] { return consumer->Numbers().size() >= 300; }));
        EXPECT_EQ(consumer->Numbers(), numbers) << consumers << " consumers";
        EXPECT_TRUE(WaitFor([&] { return intake->Depth() == 0; }));
    }
}

TEST_F(IntakeTest, HandsEventsOnToThoseThatWantThem) {
    const auto odd = AddConsumers(1, "$number == 1 or $number == 3");
    const auto all = AddConsumers(1);
    const auto intake = MakeIntake();
    for (int number = 1; number <= 4; ++number) {
        intake->Add(EventWith(number, number, false));
    }
    ASSERT_TRUE(WaitFor([&] { return all->Numbers().size() == 4; }));
    ASSERT_TRUE(WaitFor([&] { return odd->Numbers().size() == 2; }));
    EXPECT_THAT(odd->Numbers(), ElementsAre(1, 3));
}

TEST_F(IntakeTest, TakesNothingOnceClosed) {
    const auto consumer = AddConsumers(1);
    const auto intake = MakeIntake();
    intake->Close();
    intake->Add(EventWith(1, 1, false));
    intake_pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s);
    EXPECT_EQ(intake->Depth(), 0U);
    EXPECT_TRUE(consumer->Numbers().empty());
}

TEST_F(IntakeTest, TellsTheStoreForWhomAnEventIs) {
    FailingStore failing;
    AddConsumers(1, "$number == 1");
    feeds[0]->Suspend();
    const auto intake = MakeIntake(&failing.store);
    for (int number = 1; number <= 2; ++number) {
        const auto sequence =
            failing.store.AddEvent("c1", "c1/sa0/p1", "octets", std::chrono::system_clock::now());
        intake->Add(EventWith(number, sequence, true));
    }
    ASSERT_TRUE(WaitFor([&] { return intake->Depth() == 0 && failing.store.Events().size() == 1; }));
    const auto kept = failing.store.Events();
    EXPECT_TRUE(kept[0].dispatched);
    EXPECT_THAT(kept[0].consumers, ElementsAre("c1/ca0/p2"));
}

TEST_F(IntakeTest, KeepsItsEventsInOrderUntilTheStoreWorksAgain) {
    FailingStore failing;
    const auto consumer = AddConsumers(1);
    const auto intake = MakeIntake(&failing.store);
    failing.FailToInsertInto("deliveries");
    std::vector<int> numbers;
    for (int number = 1; number <= 100; ++number) {
        const auto sequence =
            failing.store.AddEvent("c1", "c1/sa0/p1", "octets", std::chrono::system_clock::now());
        intake->Add(EventWith(number, sequence, true));
        numbers.push_back(number);
    }
    ASSERT_TRUE(WaitFor([&] { return Told("wait until it works again") >= 1; }));
    EXPECT_TRUE(consumer->Numbers().empty()) << "nobody gets what the store doesn't know of";
    failing.Mend();
    ASSERT_TRUE(WaitFor([&] { return consumer->Numbers().size() >= 100; }));
    EXPECT_EQ(consumer->Numbers(), numbers);
}

TEST_F(IntakeTest, DropsTheOldestThatIsNotKeptAndKeepsTheOrderOfTheOthers) {
    FailingStore failing;
    const auto consumer = AddConsumers(1);
    const auto intake = MakeIntake(&failing.store);
    failing.FailToInsertInto("deliveries");
    EXPECT_EQ(intake->DiscardOne(), Intake::Discarded::kNothingWaits);
    for (int number = 1; number <= 100; ++number) {
        const bool kept = number % 3 == 1;
        const auto sequence =
            kept ? failing.store.AddEvent("c1", "c1/sa0/p1", "octets", std::chrono::system_clock::now()) : 0;
        intake->Add(EventWith(number, sequence, kept));
    }
    ASSERT_TRUE(WaitFor([&] { return Told("wait until it works again") >= 1; }));
    // Some of them are in the batch that is tried once a second.
    const auto drop = [&](Intake::Discarded last) {
        return WaitFor([&] { return intake->DiscardOne() == last; });
    };
    ASSERT_TRUE(drop(Intake::Discarded::kOne));
    EXPECT_EQ(intake->Depth(), 99U);
    EXPECT_GE(Told("of channel c1 was dropped before it was handed to consumers"), 1U);
    ASSERT_TRUE(WaitFor([&] {
        intake->DiscardOne();
        return intake->Depth() == 34;
    }));
    ASSERT_TRUE(drop(Intake::Discarded::kOnlyKeptOnesWait));
    failing.Mend();
    std::vector<int> kept;
    for (int number = 1; number <= 100; number += 3) {
        kept.push_back(number);
    }
    ASSERT_TRUE(WaitFor([&] { return consumer->Numbers().size() >= kept.size(); }));
    EXPECT_EQ(consumer->Numbers(), kept);
    EXPECT_TRUE(WaitFor([&] { return intake->Depth() == 0; }));
}

}  // namespace
