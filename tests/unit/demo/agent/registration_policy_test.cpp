#include "demo/agent/core/registration_policy.h"

#include <gtest/gtest.h>

#include <vector>

namespace qv_demo {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kCheck{5000};

TEST(RegistrationPolicy, StandingRegistrationIsLookedAtInTheCheckInterval) {
    RegistrationPolicy policy(kCheck);
    EXPECT_TRUE(policy.Registered(true));
    EXPECT_EQ(policy.Wait(), kCheck);
    const auto step = policy.Look(BindingState::kOurs);
    EXPECT_FALSE(step.register_now);
    EXPECT_FALSE(step.report);
    EXPECT_EQ(policy.Wait(), kCheck);
}

TEST(RegistrationPolicy, WaitsLongerAndLongerForANamingServiceThatIsAway) {
    RegistrationPolicy policy(kCheck);
    EXPECT_TRUE(policy.Registered(false));
    std::vector<long> waits{policy.Wait().count()};
    for (int i = 0; i < 6; ++i) {
        EXPECT_FALSE(policy.Look(BindingState::kUnreachable).report) << "told already";
        waits.push_back(policy.Wait().count());
    }
    EXPECT_EQ(waits, (std::vector<long>{1000, 2000, 4000, 8000, 16000, 30000, 30000}));
}

TEST(RegistrationPolicy, RegistersAgainWhenTheNameIsGone) {
    RegistrationPolicy policy(kCheck);
    policy.Registered(true);
    const auto away = policy.Look(BindingState::kUnreachable);
    EXPECT_TRUE(away.report);
    EXPECT_FALSE(away.register_now);
    const auto back = policy.Look(BindingState::kMissing);
    EXPECT_TRUE(back.register_now);
    EXPECT_TRUE(policy.Registered(true));
    EXPECT_EQ(policy.Wait(), kCheck);
}

TEST(RegistrationPolicy, ANameThatSurvivedIsNewsButNoWork) {
    RegistrationPolicy policy(kCheck);
    policy.Registered(true);
    policy.Look(BindingState::kUnreachable);
    const auto back = policy.Look(BindingState::kOurs);
    EXPECT_TRUE(back.report);
    EXPECT_FALSE(back.register_now);
    EXPECT_EQ(policy.Wait(), kCheck);
}

TEST(RegistrationPolicy, TakesALeftOverNameOnceAndThenNeverFightsForIt) {
    RegistrationPolicy fresh(kCheck);
    fresh.Registered(false);
    EXPECT_TRUE(fresh.Look(BindingState::kForeign).register_now);

    RegistrationPolicy standing(kCheck);
    standing.Registered(true);
    const auto taken = standing.Look(BindingState::kForeign);
    EXPECT_FALSE(taken.register_now);
    EXPECT_TRUE(taken.report);
    EXPECT_FALSE(standing.Look(BindingState::kForeign).report);
}

TEST(RegistrationPolicy, ARegistrationThatFailsIsTriedAgain) {
    RegistrationPolicy policy(kCheck);
    policy.Registered(true);
    EXPECT_TRUE(policy.Look(BindingState::kMissing).register_now);
    EXPECT_TRUE(policy.Registered(false));
    EXPECT_EQ(policy.Wait(), milliseconds(1000));
    EXPECT_TRUE(policy.Look(BindingState::kMissing).register_now);
}

TEST(RegistrationPolicy, AnIntervalOfNothingDoesNotSpin) {
    RegistrationPolicy policy(milliseconds(0));
    policy.Registered(true);
    EXPECT_GE(policy.Wait(), milliseconds(100));
}

}  // namespace
}  // namespace qv_demo
