#include "demo/agent/core/registration_policy.h"

#include <algorithm>

namespace qv_demo {
namespace {

constexpr std::chrono::milliseconds kFirstRetry{1000};
constexpr std::chrono::milliseconds kLongestRetry{30000};

}  // namespace

RegistrationPolicy::RegistrationPolicy(std::chrono::milliseconds check_interval)
    : check_interval_(std::max(check_interval, std::chrono::milliseconds(100))) {}

RegistrationPolicy::Step RegistrationPolicy::Look(BindingState state) {
    Step step;
    step.report = state != last_;
    // A name that leads elsewhere is taken over once, at the start, as a left-over of an earlier
    // installation. Later on another agent has taken it on purpose, and two agents that keep taking it from
    // each other help nobody.
    step.register_now = state == BindingState::kMissing || (state == BindingState::kForeign && !settled_);
    last_ = state;
    if (state == BindingState::kUnreachable) {
        Fail();
    } else {
        settled_ = true;
        retry_ = std::chrono::milliseconds::zero();
    }
    return step;
}

bool RegistrationPolicy::Registered(bool success) {
    const BindingState now = success ? BindingState::kOurs : BindingState::kUnreachable;
    const bool news = now != last_;
    last_ = now;
    if (success) {
        settled_ = true;
        retry_ = std::chrono::milliseconds::zero();
    } else {
        Fail();
    }
    return news;
}

std::chrono::milliseconds RegistrationPolicy::Wait() const {
    return retry_ == std::chrono::milliseconds::zero() ? check_interval_ : retry_;
}

void RegistrationPolicy::Fail() {
    retry_ = retry_ == std::chrono::milliseconds::zero() ? kFirstRetry : std::min(retry_ * 2, kLongestRetry);
}

}  // namespace qv_demo
