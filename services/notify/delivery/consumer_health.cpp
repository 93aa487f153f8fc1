#include "services/notify/delivery/consumer_health.h"

#include <algorithm>

namespace qv_notify {

const char* NameOf(ConsumerState state) {
    switch (state) {
        case ConsumerState::kOnline:
            return "online";
        case ConsumerState::kSuspect:
            return "suspect";
        case ConsumerState::kSuspended:
            return "suspended";
        case ConsumerState::kGone:
            break;
    }
    return "gone";
}

bool ConsumerHealth::MayCall(SteadyTime now) const {
    const ConsumerState state = State();
    return state == ConsumerState::kOnline || (state == ConsumerState::kSuspect && now >= m_retry_at);
}

void ConsumerHealth::Succeeded() {
    if (m_state != ConsumerState::kGone) {
        m_state = ConsumerState::kOnline;
    }
    m_rebound = false;
    m_refused = 0;
    m_pauses = 0;
    m_retry_at = SteadyTime::min();
}

void ConsumerHealth::Resume() {
    m_suspended = false;
    Succeeded();
}

ConsumerHealth::Action ConsumerHealth::Failed(CallFailure failure, SteadyTime now) {
    switch (failure) {
        case CallFailure::kNotThere:
            m_state = ConsumerState::kGone;
            return Action::kGiveUp;
        case CallFailure::kRefused:
            // It answers, so it is there.
            if (++m_refused >= m_policy.tries_of_refused_event) {
                Succeeded();
                return Action::kDropEvent;
            }
            break;
        case CallFailure::kConnection:
            if (m_state == ConsumerState::kOnline && !m_rebound) {
                m_rebound = true;
                return Action::kTryAtOnce;
            }
            break;
        case CallFailure::kTimeout:
            break;
    }
    return Pause(now);
}

ConsumerHealth::Action ConsumerHealth::Pause(SteadyTime now) {
    if (m_state == ConsumerState::kOnline) {
        m_state = ConsumerState::kSuspect;
        m_suspect_since = now;
    }
    if (m_policy.give_up_after && now - m_suspect_since >= *m_policy.give_up_after) {
        m_state = ConsumerState::kGone;
        return Action::kGiveUp;
    }
    constexpr int kMostDoublings = 20;
    const auto pause = m_policy.first_pause * (1 << std::min(m_pauses++, kMostDoublings));
    m_retry_at = now + std::min<std::chrono::milliseconds>(pause, m_policy.longest_pause);
    return Action::kTryLater;
}

}  // namespace qv_notify
