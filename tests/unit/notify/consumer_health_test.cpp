#include "services/notify/delivery/consumer_health.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using qv_notify::CallFailure;
using qv_notify::ConsumerHealth;
using qv_notify::ConsumerState;
using qv_notify::RetryPolicy;
using qv_notify::SteadyTime;
using Action = ConsumerHealth::Action;

const SteadyTime kStart{std::chrono::hours(1)};

class ConsumerHealthTest : public testing::Test {
  protected:
    static RetryPolicy Policy() {
        RetryPolicy policy;
        policy.first_pause = 100ms;
        policy.longest_pause = 500ms;
        policy.tries_of_refused_event = 3;
        policy.give_up_after = 60s;
        return policy;
    }
    void MakeSuspect() {
        ASSERT_EQ(health.Failed(CallFailure::kTimeout, kStart), Action::kTryLater);
        ASSERT_EQ(health.State(), ConsumerState::kSuspect);
    }
    ConsumerHealth health{Policy()};
};

TEST_F(ConsumerHealthTest, IsOnlineAtFirst) {
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(SteadyTime::min()));
}

TEST_F(ConsumerHealthTest, BindsOnceAnewBeforeALostConnectionCounts) {
    EXPECT_EQ(health.Failed(CallFailure::kConnection, kStart), Action::kTryAtOnce);
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(kStart));
    EXPECT_EQ(health.Failed(CallFailure::kConnection, kStart), Action::kTryLater);
    EXPECT_EQ(health.State(), ConsumerState::kSuspect);
}

TEST_F(ConsumerHealthTest, MayBindAnewAgainAfterASuccess) {
    ASSERT_EQ(health.Failed(CallFailure::kConnection, kStart), Action::kTryAtOnce);
    health.Succeeded();
    EXPECT_EQ(health.Failed(CallFailure::kConnection, kStart), Action::kTryAtOnce);
}

TEST_F(ConsumerHealthTest, ATimeoutMakesItSuspectAtOnce) {
    MakeSuspect();
    EXPECT_FALSE(health.MayCall(kStart + 99ms));
    EXPECT_TRUE(health.MayCall(kStart + 100ms));
}

TEST_F(ConsumerHealthTest, DoesNotBindAnewWhileSuspect) {
    MakeSuspect();
    EXPECT_EQ(health.Failed(CallFailure::kConnection, kStart + 1s), Action::kTryLater);
}

TEST_F(ConsumerHealthTest, PausesDoubleUpToTheLongest) {
    SteadyTime now = kStart;
    for (const auto pause : {100ms, 200ms, 400ms, 500ms, 500ms}) {
        ASSERT_EQ(health.Failed(CallFailure::kTimeout, now), Action::kTryLater);
        EXPECT_EQ(health.RetryAt() - now, pause);
        now = health.RetryAt();
    }
}

TEST_F(ConsumerHealthTest, PausesStayTheLongestHoweverOftenItFails) {
    RetryPolicy policy = Policy();
    policy.give_up_after.reset();
    ConsumerHealth patient(policy);
    SteadyTime now = kStart;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(patient.Failed(CallFailure::kTimeout, now), Action::kTryLater);
        ASSERT_GT(patient.RetryAt(), now);
        ASSERT_LE(patient.RetryAt() - now, 500ms);
        now = patient.RetryAt();
    }
}

TEST_F(ConsumerHealthTest, ASuccessMakesItOnlineAndItsPausesShort) {
    MakeSuspect();
    health.Failed(CallFailure::kTimeout, kStart + 100ms);
    health.Succeeded();
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(kStart));
    health.Failed(CallFailure::kTimeout, kStart);
    EXPECT_EQ(health.RetryAt(), kStart + 100ms);
}

TEST_F(ConsumerHealthTest, IsGivenUpWhenItHasBeenSuspectForTooLong) {
    MakeSuspect();
    EXPECT_EQ(health.Failed(CallFailure::kTimeout, kStart + 60s - 1ms), Action::kTryLater);
    EXPECT_EQ(health.Failed(CallFailure::kConnection, kStart + 60s), Action::kGiveUp);
    EXPECT_EQ(health.State(), ConsumerState::kGone);
}

TEST_F(ConsumerHealthTest, TheTimeUntilItIsGivenUpStartsAnewWithASuccess) {
    MakeSuspect();
    health.Succeeded();
    EXPECT_EQ(health.Failed(CallFailure::kTimeout, kStart + 100s), Action::kTryLater);
    EXPECT_EQ(health.Failed(CallFailure::kTimeout, kStart + 160s), Action::kGiveUp);
}

TEST_F(ConsumerHealthTest, IsNeverGivenUpWithoutALimit) {
    RetryPolicy policy = Policy();
    policy.give_up_after.reset();
    ConsumerHealth patient(policy);
    patient.Failed(CallFailure::kTimeout, kStart);
    EXPECT_EQ(patient.Failed(CallFailure::kTimeout, kStart + 10000h), Action::kTryLater);
}

TEST_F(ConsumerHealthTest, IsGoneAtOnceWhenThereIsNoSuchObject) {
    EXPECT_EQ(health.Failed(CallFailure::kNotThere, kStart), Action::kGiveUp);
    EXPECT_EQ(health.State(), ConsumerState::kGone);
    EXPECT_FALSE(health.MayCall(SteadyTime::max()));
}

TEST_F(ConsumerHealthTest, StaysGone) {
    health.SetGone();
    health.Succeeded();
    EXPECT_EQ(health.State(), ConsumerState::kGone);
    health.Suspend();
    EXPECT_EQ(health.State(), ConsumerState::kGone);
    health.Resume();
    EXPECT_EQ(health.State(), ConsumerState::kGone);
}

TEST_F(ConsumerHealthTest, AnEventThatIsRefusedIsDroppedAtTheThirdTime) {
    EXPECT_EQ(health.Failed(CallFailure::kRefused, kStart), Action::kTryLater);
    EXPECT_EQ(health.State(), ConsumerState::kSuspect);
    EXPECT_EQ(health.Failed(CallFailure::kRefused, kStart + 1s), Action::kTryLater);
    EXPECT_EQ(health.Failed(CallFailure::kRefused, kStart + 2s), Action::kDropEvent);
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(kStart));
    EXPECT_EQ(health.Failed(CallFailure::kRefused, kStart + 3s), Action::kTryLater) << "of the next event";
}

TEST_F(ConsumerHealthTest, RefusalsOfDifferentEventsDoNotAddUp) {
    health.Failed(CallFailure::kRefused, kStart);
    health.Failed(CallFailure::kRefused, kStart);
    health.BeginRefusals();
    EXPECT_EQ(health.Failed(CallFailure::kRefused, kStart), Action::kTryLater);
}

TEST_F(ConsumerHealthTest, SuspendedItMayNotBeCalled) {
    health.Suspend();
    EXPECT_EQ(health.State(), ConsumerState::kSuspended);
    EXPECT_FALSE(health.MayCall(SteadyTime::max()));
    health.Resume();
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(kStart));
}

TEST_F(ConsumerHealthTest, ACallThatSucceedsAfterSuspensionDoesNotEndIt) {
    health.Suspend();
    health.Succeeded();
    EXPECT_EQ(health.State(), ConsumerState::kSuspended);
}

TEST_F(ConsumerHealthTest, ResumedItIsOnlineWhateverWasBefore) {
    MakeSuspect();
    health.Suspend();
    EXPECT_EQ(health.State(), ConsumerState::kSuspended);
    health.Resume();
    EXPECT_EQ(health.State(), ConsumerState::kOnline);
    EXPECT_TRUE(health.MayCall(kStart));
}

TEST_F(ConsumerHealthTest, SuspendedItCanStillBeGone) {
    health.Suspend();
    EXPECT_EQ(health.Failed(CallFailure::kNotThere, kStart), Action::kGiveUp);
    EXPECT_EQ(health.State(), ConsumerState::kGone);
}

TEST(ConsumerStateNames, AreThoseOfTheLog) {
    EXPECT_STREQ(NameOf(ConsumerState::kOnline), "online");
    EXPECT_STREQ(NameOf(ConsumerState::kSuspect), "suspect");
    EXPECT_STREQ(NameOf(ConsumerState::kSuspended), "suspended");
    EXPECT_STREQ(NameOf(ConsumerState::kGone), "gone");
}

}  // namespace
