// What a feed delivers, and what it does when its consumer fails.
#include <gmock/gmock.h>

#include <atomic>

#include "tests/unit/notify/feed_fixture.h"
#include "tests/unit/notify/gate.h"

namespace {

using namespace std::chrono_literals;
using namespace qv_notify_test;
using qv_notify::CallFailure;
using qv_notify::CallOutcome;
using qv_notify::ConsumerState;
using qv_notify::Feed;
using qv_test::WaitFor;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(FeedTest, DeliversInOrder) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    AddFromTo(*feed, 1, 500);
    ASSERT_TRUE(port->WaitForGot(500));
    EXPECT_EQ(port->Got(), Names(1, 500));
    ASSERT_TRUE(WaitFor([&] { return Done().size() == 500; }));
    EXPECT_EQ(feed->Counts().delivered, 500U);
    EXPECT_EQ(feed->Depth(), 0U);
    EXPECT_EQ(AllTold(), "");
}

TEST_F(FeedTest, CollectsEventsUntilAConsumerConnects) {
    const auto feed = MakeFeed();
    AddFromTo(*feed, 1, 3);
    EXPECT_FALSE(feed->Connected());
    EXPECT_EQ(feed->Depth(), 3U);
    feed->Connect(port);
    EXPECT_TRUE(feed->Connected());
    ASSERT_TRUE(port->WaitForGot(3));
    EXPECT_EQ(port->Got(), Names(1, 3));
}

TEST_F(FeedTest, ReportsOnlyKeptEventsAsDone) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->Add(EventNumber(1, false));
    feed->Add(EventNumber(2, true));
    ASSERT_TRUE(port->WaitForGot(2));
    ASSERT_TRUE(WaitFor([&] { return !Done().empty(); }));
    EXPECT_EQ(Done(), Sequences{2});
}

TEST_F(FeedTest, TriesAgainInTheSameOrder) {
    const auto feed = MakeFeed();
    std::atomic<int> failures{0};
    port->AnswerWith([&](std::int64_t sequence) {
        return sequence % 10 == 0 && failures++ % 3 != 2 ? Failure(CallFailure::kTimeout) : CallOutcome{};
    });
    feed->Connect(port);
    AddFromTo(*feed, 1, 50);
    ASSERT_TRUE(port->WaitForGot(50));
    EXPECT_EQ(port->Got(), Names(1, 50));
    EXPECT_EQ(port->Tried().size(), 60U);
    EXPECT_TRUE(WaitFor([&] { return feed->State() == ConsumerState::kOnline; }));
}

TEST_F(FeedTest, BindsAnewWithoutAWordWhenAnIdleConnectionWasClosed) {
    const auto feed = MakeFeed();
    std::atomic<int> calls{0};
    port->AnswerWith(
        [&](std::int64_t) { return ++calls == 1 ? Failure(CallFailure::kConnection) : CallOutcome{}; });
    feed->Connect(port);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    EXPECT_EQ(port->Tried(), (std::vector<std::string>{"1", "1"}));
    EXPECT_EQ(AllTold(), "");
}

TEST_F(FeedTest, TellsEachChangeOfStateOnce) {
    const auto feed = MakeFeed();
    std::atomic<bool> works{false};
    port->AnswerWith([&](std::int64_t) { return works ? CallOutcome{} : Failure(CallFailure::kTimeout); });
    feed->Connect(port);
    AddFromTo(*feed, 1, 3);
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() >= 5; }));
    EXPECT_EQ(feed->State(), ConsumerState::kSuspect);
    works = true;
    ASSERT_TRUE(port->WaitForGot(3));
    ASSERT_TRUE(WaitFor([&] { return Told("online") == 1; }));
    EXPECT_EQ(Told("suspect"), 1U);
    EXPECT_THAT(AllTold(),
                AllOf(HasSubstr("10.0.0.7:4711"), HasSubstr("c1/ca0/p1"), HasSubstr("told to fail"),
                      HasSubstr("3 events wait"), HasSubstr("look whether its process runs")));
}

TEST_F(FeedTest, TellsOnceOfAnEventThatMayArriveTwice) {
    const auto feed = MakeFeed();
    std::atomic<int> calls{0};
    port->AnswerWith(
        [&](std::int64_t) { return ++calls <= 4 ? Failure(CallFailure::kTimeout, true) : CallOutcome{}; });
    feed->Connect(port);
    feed->Add(EventNumber(7));
    ASSERT_TRUE(port->WaitForGot(1));
    ASSERT_TRUE(WaitFor([&] { return Told("online") == 1; }));
    EXPECT_EQ(feed->Counts().in_doubt, 1U);
    EXPECT_EQ(Told("may get event 7 twice"), 1U);
}

TEST_F(FeedTest, DropsAnEventThatIsRefusedThreeTimesAndGoesOn) {
    const auto feed = MakeFeed();
    port->AnswerWith(
        [](std::int64_t sequence) { return sequence == 2 ? Failure(CallFailure::kRefused) : CallOutcome{}; });
    feed->Connect(port);
    AddFromTo(*feed, 1, 4);
    ASSERT_TRUE(port->WaitForGot(3));
    EXPECT_EQ(port->Got(), (std::vector<std::string>{"1", "3", "4"}));
    EXPECT_EQ(port->Tried(), (std::vector<std::string>{"1", "2", "2", "2", "3", "4"}));
    ASSERT_TRUE(WaitFor([&] { return Done().size() == 4; }));
    EXPECT_EQ(feed->Counts().refused, 1U);
    EXPECT_EQ(Told("refuses it"), 1U);
    EXPECT_EQ(feed->State(), ConsumerState::kOnline);
    EXPECT_FALSE(feed->Slow());
}

TEST_F(FeedTest, TellsOnceThatAConsumerIsGone) {
    const auto feed = MakeFeed();
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kNotThere); });
    feed->Connect(port);
    AddFromTo(*feed, 1, 5);
    ASSERT_TRUE(WaitFor([&] { return Gone() == 1; }));
    AddFromTo(*feed, 6, 10);
    feed->Resume();
    pool.Schedule(feed);
    ASSERT_TRUE(pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s));
    EXPECT_EQ(Gone(), 1);
    EXPECT_EQ(port->Tried(), (std::vector<std::string>{"1"}));
    EXPECT_EQ(Told("is gone"), 1U);
    EXPECT_EQ(Done(), Sequences{1});
}

TEST_F(FeedTest, AsksAgainUntilTheProxyOfAConsumerThatIsGoneIsEnded) {
    const auto feed = MakeFeed();
    gone_needed = 2;
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kNotThere); });
    feed->Connect(port);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(WaitFor([&] { return Gone() == 1; }));
    feed->Close();  // as who is told does
    ASSERT_TRUE(WaitFor([&] { return Gone() == 2; }));
    pool.Schedule(feed);
    ASSERT_TRUE(pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s));
    EXPECT_EQ(Gone(), 2);
}

TEST_F(FeedTest, GivesUpAConsumerThatIsSuspectForTooLong) {
    retry.give_up_after = 50ms;
    const auto feed = MakeFeed();
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kTimeout); });
    feed->Connect(port);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(WaitFor([&] { return Gone() == 1; }));
    EXPECT_EQ(Told("is suspect"), 1U);
    EXPECT_EQ(Told("is gone"), 1U);
    EXPECT_EQ(feed->State(), ConsumerState::kGone);
}

TEST_F(FeedTest, OneThatHangsDoesNotStopOthers) {
    Gate gate;
    const OpensAtEnd opens(gate);
    std::vector<std::shared_ptr<Feed>> hanging;
    for (int i = 0; i < 3; ++i) {
        hanging.push_back(MakeFeed("c1/ca0/p1" + std::to_string(i)));
        auto hangs = std::make_shared<FakePort>();
        hangs->AnswerWith([&gate](std::int64_t) {
            gate.Wait();
            return CallOutcome{};
        });
        hanging.back()->Connect(hangs);
        hanging.back()->Add(EventNumber(1));
        ASSERT_TRUE(WaitFor([&] { return hangs->Tried().size() == 1; }));
    }
    const auto feed = MakeFeed();
    feed->Connect(port);
    AddFromTo(*feed, 1, 1000);
    EXPECT_TRUE(port->WaitForGot(1000));
    EXPECT_EQ(hanging[0]->Counts().delivered, 0U);
}

TEST_F(FeedTest, CountsAsSlowWhileSuspect) {
    const auto feed = MakeFeed();
    retry.first_pause = 1h;
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kTimeout); });
    EXPECT_FALSE(feed->Slow());
    feed->Connect(port);
    feed->Add(EventNumber(1));
    EXPECT_TRUE(WaitFor([&] { return feed->Slow(); }));
}

TEST_F(FeedTest, ClosedDuringACallThatSucceedsItIsDoneWithTheEventAlone) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    port->AnswerWith([&gate](std::int64_t) {
        gate.Wait();
        return CallOutcome{};
    });
    feed->Connect(port);
    AddFromTo(*feed, 1, 3);
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Close();
    EXPECT_EQ(feed->Depth(), 0U);
    gate.Open();
    ASSERT_TRUE(pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s));
    EXPECT_EQ(Done(), Sequences{1});
    EXPECT_EQ(port->Tried().size(), 1U);
    EXPECT_EQ(Gone(), 0);
    EXPECT_EQ(AllTold(), "");
}

TEST_F(FeedTest, ClosedDuringACallThatFailsItIsSilent) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    port->AnswerWith([&gate](std::int64_t) {
        gate.Wait();
        return Failure(CallFailure::kNotThere);
    });
    feed->Connect(port);
    AddFromTo(*feed, 1, 3);
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Close();
    gate.Open();
    ASSERT_TRUE(pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s));
    EXPECT_EQ(Gone(), 0);
    EXPECT_EQ(AllTold(), "");
    feed->Add(EventNumber(4));
    EXPECT_EQ(feed->Depth(), 0U) << "closed, it takes nothing";
}

TEST_F(FeedTest, ClosedItKeepsNoEventAlive) {
    const auto feed = MakeFeed();
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kTimeout, true); });
    auto event = EventNumber(1);
    const std::weak_ptr<const qv_notify::Event> lives = event;
    feed->Connect(port);
    feed->Add(event);
    event.reset();
    ASSERT_TRUE(WaitFor([&] { return feed->Counts().in_doubt == 1; }));
    feed->Close();
    EXPECT_TRUE(WaitFor([&] { return lives.expired(); }));
}

}  // namespace
