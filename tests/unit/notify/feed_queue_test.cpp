// What waits in a feed: suspended, paced, discarded, too old; and announcements between the events.
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
using qv_test::WaitFor;
using testing::ElementsAre;

CosNotification::EventTypeSeq Types(const char* name) {
    CosNotification::EventTypeSeq types;
    types.length(1);
    types[0].domain_name = CORBA::string_dup("d");
    types[0].type_name = CORBA::string_dup(name);
    return types;
}

class FeedQueueTest : public FeedTest {
  protected:
    /// The first event is taken when the gate opens, the others at once.
    void HoldTheFirst(Gate& gate) {
        port->AnswerWith([&gate](std::int64_t sequence) {
            if (sequence == 1) {
                gate.Wait();
            }
            return CallOutcome{};
        });
    }

    void WaitUntilIdle() { ASSERT_TRUE(pool.WaitUntilIdle(std::chrono::steady_clock::now() + 30s)); }
};

TEST_F(FeedQueueTest, KeepsEventsWhileSuspended) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->Suspend();
    EXPECT_TRUE(feed->Suspended());
    AddFromTo(*feed, 1, 5);
    WaitUntilIdle();
    EXPECT_EQ(feed->Depth(), 5U);
    EXPECT_TRUE(port->Tried().empty());
    EXPECT_EQ(Told("is suspended"), 1U);
    feed->Resume();
    ASSERT_TRUE(port->WaitForGot(5));
    EXPECT_EQ(port->Got(), Names(1, 5));
    EXPECT_EQ(Told("is online"), 1U);
}

TEST_F(FeedQueueTest, ACallThatFailsAfterSuspensionKeepsItsEvent) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    std::atomic<bool> fails{true};
    port->AnswerWith([&](std::int64_t) {
        gate.Wait();
        return fails ? Failure(CallFailure::kTimeout) : CallOutcome{};
    });
    feed->Connect(port);
    AddFromTo(*feed, 1, 2);
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Suspend();
    gate.Open();
    WaitUntilIdle();
    EXPECT_EQ(feed->State(), ConsumerState::kSuspended);
    EXPECT_EQ(feed->Depth(), 2U);
    fails = false;
    feed->Resume();
    ASSERT_TRUE(port->WaitForGot(2));
    EXPECT_EQ(port->Got(), Names(1, 2));
}

TEST_F(FeedQueueTest, DiscardsTheOldestWhenItsQueueIsFull) {
    policy.max_events = 3;
    const auto feed = MakeFeed();
    AddFromTo(*feed, 1, 5);
    EXPECT_EQ(feed->Depth(), 3U);
    EXPECT_EQ(feed->Counts().discarded, 2U);
    EXPECT_THAT(Done(), ElementsAre(1, 2));
    EXPECT_EQ(Told("there is no room for more"), 2U);
    feed->Connect(port);
    ASSERT_TRUE(port->WaitForGot(3));
    EXPECT_EQ(port->Got(), Names(3, 5));
}

TEST_F(FeedQueueTest, AShorterQueueLosesWhatIsTooMuch) {
    const auto feed = MakeFeed();
    AddFromTo(*feed, 1, 5);
    policy.max_events = 2;
    feed->SetPolicy(policy);
    EXPECT_EQ(feed->Depth(), 2U);
    EXPECT_THAT(Done(), ElementsAre(1, 2, 3));
    EXPECT_EQ(Told("made shorter"), 3U);
}

TEST_F(FeedQueueTest, DiscardsOneOnRequest) {
    const auto feed = MakeFeed();
    AddFromTo(*feed, 1, 2);
    EXPECT_TRUE(feed->DiscardOne());
    EXPECT_TRUE(feed->DiscardOne());
    EXPECT_FALSE(feed->DiscardOne());
    EXPECT_THAT(Done(), ElementsAre(1, 2));
    EXPECT_EQ(feed->Counts().discarded, 2U);
}

TEST_F(FeedQueueTest, DropsEventsThatAreTooOld) {
    const auto feed = MakeFeed();
    const auto old = std::make_shared<qv_notify::Event>(*EventNumber(1));
    old->expires = std::chrono::system_clock::now() - 1s;
    const auto lasting = std::make_shared<qv_notify::Event>(*EventNumber(2));
    lasting->expires = std::chrono::system_clock::now() + 1h;
    feed->Add(old);
    feed->Add(lasting);
    feed->Connect(port);
    ASSERT_TRUE(port->WaitForGot(1));
    EXPECT_EQ(port->Got(), Names(2, 2));
    ASSERT_TRUE(WaitFor([&] { return Done().size() == 2; }));
    EXPECT_EQ(feed->Counts().expired, 1U);
    EXPECT_EQ(Told("older than their time-out"), 1U);
}

TEST_F(FeedQueueTest, AnEventMayGetTooOldBetweenTwoTries) {
    const auto feed = MakeFeed();
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kTimeout); });
    const auto event = std::make_shared<qv_notify::Event>(*EventNumber(1));
    event->expires = std::chrono::system_clock::now() + 50ms;
    feed->Connect(port);
    feed->Add(event);
    ASSERT_TRUE(WaitFor([&] { return feed->Counts().expired == 1; }));
    EXPECT_EQ(feed->Depth(), 0U);
    EXPECT_EQ(Done(), Sequences{1});
}

TEST_F(FeedQueueTest, DeliversByPriorityAsSoonAsThePolicySaysSo) {
    const auto feed = MakeFeed();
    feed->Add(EventNumber(1, true, 0));
    feed->Add(EventNumber(2, true, 5));
    policy.order = qv_notify::Order::kPriority;
    feed->SetPolicy(policy);
    feed->Connect(port);
    ASSERT_TRUE(port->WaitForGot(2));
    EXPECT_EQ(port->Got(), (std::vector<std::string>{"2", "1"}));
}

TEST_F(FeedQueueTest, CollectsEventsBetweenTwoRounds) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->SetPacing(100ms);
    const auto start = std::chrono::steady_clock::now();
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    AddFromTo(*feed, 2, 4);
    ASSERT_TRUE(port->WaitForGot(4));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms);
    EXPECT_EQ(port->Got(), Names(1, 4));
}

TEST_F(FeedQueueTest, AnEventThatComesDuringARoundBelongsToTheNext) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    HoldTheFirst(gate);
    feed->Connect(port);
    feed->SetPacing(1h);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Add(EventNumber(2));
    gate.Open();
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    EXPECT_EQ(port->Got(), Names(1, 1));
    feed->SetPacing(1ms);
    EXPECT_TRUE(port->WaitForGot(2));
}

TEST_F(FeedQueueTest, ARoundTakesAllThatWaitedWhenItBegan) {
    const auto feed = MakeFeed();
    AddFromTo(*feed, 1, 100);
    feed->SetPacing(1h);
    feed->Connect(port);
    ASSERT_TRUE(port->WaitForGot(100));
    EXPECT_EQ(port->Got(), Names(1, 100));
}

TEST_F(FeedQueueTest, ResumedWithinAPauseOfPacingItGoesOnAfterIt) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->SetPacing(200ms);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    feed->Suspend();
    AddFromTo(*feed, 2, 3);
    WaitUntilIdle();
    feed->Resume();
    EXPECT_TRUE(port->WaitForGot(3));
}

TEST_F(FeedQueueTest, AShorterPacingHoldsAtOnce) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->SetPacing(1h);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    feed->Add(EventNumber(2));
    WaitUntilIdle();
    EXPECT_EQ(port->Got().size(), 1U);
    feed->SetPacing(1ms);
    EXPECT_TRUE(port->WaitForGot(2));
}

TEST_F(FeedQueueTest, AnnouncesBetweenEventsWhatCameTogether) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    HoldTheFirst(gate);
    feed->Connect(port);
    AddFromTo(*feed, 1, 2);
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Announce(Types("a"), {});
    feed->Announce(Types("b"), {});
    gate.Open();
    ASSERT_TRUE(port->WaitForGot(3));
    EXPECT_EQ(port->Got(), (std::vector<std::string>{"1", "+a+b", "2"}));
}

TEST_F(FeedQueueTest, OneThatIsAwayIsToldOnlyWhatIsDifferentInTheEnd) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->Suspend();
    for (int i = 0; i < 1000; ++i) {
        feed->Announce(Types("a"), {});
        feed->Announce({}, Types("a"));
    }
    feed->Announce(Types("b"), Types("c"));
    feed->Resume();
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    EXPECT_EQ(port->Got(), std::vector<std::string>{"+b-c"});
}

TEST_F(FeedQueueTest, WhatIsAnnouncedDuringAnAttemptThatFailsIsAddedToIt) {
    Gate gate;
    const OpensAtEnd opens(gate);
    const auto feed = MakeFeed();
    std::atomic<int> calls{0};
    port->AnswerWith([&](std::int64_t) {
        gate.Wait();
        return ++calls == 1 ? Failure(CallFailure::kConnection) : CallOutcome{};
    });
    feed->Connect(port);
    feed->Announce(Types("a"), {});
    ASSERT_TRUE(WaitFor([&] { return port->Tried().size() == 1; }));
    feed->Announce(Types("b"), {});
    gate.Open();
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    EXPECT_EQ(port->Got(), std::vector<std::string>{"+a+b"});
}

TEST_F(FeedQueueTest, AnnouncesToAConsumerThatGetsNoEvents) {
    const auto feed = MakeFeed();
    feed->Connect(port);
    feed->SetPacing(50ms);
    feed->Announce(Types("a"), {});
    ASSERT_TRUE(port->WaitForGot(1));
    WaitUntilIdle();
    feed->Announce(Types("b"), {});
    EXPECT_TRUE(port->WaitForGot(2)) << "within a pause of pacing";
}

TEST_F(FeedQueueTest, AConsumerWithoutOfferChangeGetsItsEvents) {
    const auto feed = MakeFeed();
    port->AnswerWith(
        [](std::int64_t sequence) { return sequence == 0 ? Failure(CallFailure::kRefused) : CallOutcome{}; });
    feed->Connect(port);
    feed->Announce(Types("a"), {});
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    EXPECT_EQ(AllTold(), "");
}

TEST_F(FeedQueueTest, AnAnnouncementIsRepeatedWhenTheConsumerCanBeReachedAgain) {
    const auto feed = MakeFeed();
    std::atomic<int> calls{0};
    port->AnswerWith(
        [&](std::int64_t) { return ++calls <= 3 ? Failure(CallFailure::kConnection) : CallOutcome{}; });
    feed->Connect(port);
    feed->Announce(Types("a"), {});
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(2));
    EXPECT_EQ(port->Got(), (std::vector<std::string>{"+a", "1"}));
    EXPECT_EQ(Told("is suspect"), 1U);
}

TEST_F(FeedQueueTest, AnAnnouncementThatTakesTooLongIsLeftOut) {
    const auto feed = MakeFeed();
    port->AnswerWith(
        [](std::int64_t sequence) { return sequence == 0 ? Failure(CallFailure::kTimeout) : CallOutcome{}; });
    feed->Connect(port);
    feed->Announce(Types("a"), {});
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    EXPECT_EQ(port->Tried(), (std::vector<std::string>{"+a", "1"}));
}

TEST_F(FeedQueueTest, AnAnnouncementFindsOutThatAConsumerIsGone) {
    const auto feed = MakeFeed();
    port->AnswerWith([](std::int64_t) { return Failure(CallFailure::kNotThere); });
    feed->Connect(port);
    feed->Announce(Types("a"), {});
    EXPECT_TRUE(WaitFor([&] { return Gone() == 1; }));
}

TEST_F(FeedQueueTest, WithoutAConsumerNothingIsAnnouncedLater) {
    const auto feed = MakeFeed();
    feed->Announce(Types("a"), {});
    feed->Connect(port);
    feed->Add(EventNumber(1));
    ASSERT_TRUE(port->WaitForGot(1));
    EXPECT_EQ(port->Got(), Names(1, 1));
}

}  // namespace
