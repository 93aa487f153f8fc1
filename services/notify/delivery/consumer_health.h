// What the service thinks of a consumer, and when it calls it again.
#pragma once

#include <chrono>
#include <optional>

#include "services/notify/delivery/work_pool.h"

namespace qv_notify {

/// The states of a consumer. Each change of state is told to the operator.
enum class ConsumerState {
    kOnline,     ///< it takes what it is sent
    kSuspect,    ///< it did not take the last event; it is tried again after growing pauses
    kSuspended,  ///< its owner asked for a pause; events are kept for it
    kGone        ///< it does not exist any more, or nobody has reached it for too long
};

const char* NameOf(ConsumerState state);

/// How a call to a consumer failed.
enum class CallFailure {
    kConnection,  ///< no connection, or it closed
    kTimeout,     ///< no answer in time; the consumer may have got the event
    kRefused,     ///< the consumer raised an exception
    kNotThere     ///< there is no such object
};

/// When a consumer that fails is called again, and when it is given up.
struct RetryPolicy {
    std::chrono::milliseconds first_pause{250};
    std::chrono::milliseconds longest_pause{30000};
    /// An event that a consumer raises an exception for is offered so often.
    int tries_of_refused_event = 3;
    /// A consumer that has been suspect for so long is gone; none: never.
    std::optional<std::chrono::milliseconds> give_up_after;
};

/// Keeps the state of one consumer. Has no clock and no lock of its own: the caller passes the time and sees
/// to it that one thread at a time uses it.
class ConsumerHealth {
  public:
    enum class Action {
        kTryAtOnce,  ///< a connection that was idle may just have been closed: bind again, nothing is counted
        kTryLater,   ///< from RetryAt() on
        kDropEvent,  ///< the consumer doesn't want this event; go on with the next one at once
        kGiveUp      ///< it is gone
    };

    explicit ConsumerHealth(const RetryPolicy& policy) : m_policy(policy) {}

    ConsumerState State() const {
        return m_suspended && m_state != ConsumerState::kGone ? ConsumerState::kSuspended : m_state;
    }
    /// Whether an event may be sent at that time.
    bool MayCall(SteadyTime now) const;
    SteadyTime RetryAt() const { return m_retry_at; }

    void Succeeded();
    /// The next refusal is the first one of another event.
    void BeginRefusals() { m_refused = 0; }
    Action Failed(CallFailure failure, SteadyTime now);
    void Suspend() { m_suspended = true; }
    /// Its owner says that it is ready, so nothing that was before counts.
    void Resume();
    void SetGone() { m_state = ConsumerState::kGone; }

  private:
    Action Pause(SteadyTime now);

    const RetryPolicy m_policy;
    ConsumerState m_state = ConsumerState::kOnline;
    bool m_suspended = false;
    bool m_rebound = false;
    int m_refused = 0;
    int m_pauses = 0;
    SteadyTime m_suspect_since{};
    SteadyTime m_retry_at = SteadyTime::min();
};

}  // namespace qv_notify
