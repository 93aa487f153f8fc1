#pragma once

#include <chrono>
#include <optional>

namespace qv_demo {

/// Where the session factory stands in the naming service.
enum class BindingState {
    kUnreachable,  ///< the naming service does not answer
    kMissing,      ///< it answers and has no such name
    kOurs,         ///< the name leads to this agent
    kForeign       ///< the name leads to another agent
};

/// When to register with the naming service and how long to wait before the next look, as a table of states
/// without threads or remote calls. Not thread-safe.
class RegistrationPolicy {
  public:
    /// @param check_interval how often a registration that stands is looked at
    explicit RegistrationPolicy(std::chrono::milliseconds check_interval);

    /// What to do after the look at the naming service that found `state`.
    struct Step {
        bool register_now = false;
        bool report = false;  ///< the state is news; repeated ones are not
    };
    Step Look(BindingState state);

    /// Tells whether the registration that Look asked for came about. True when the outcome is news.
    bool Registered(bool success);

    /// How long to wait before the next look: the check interval, or, as long as the registration doesn't
    /// stand, from one second on twice as long each time, up to half a minute.
    std::chrono::milliseconds Wait() const;

  private:
    void Fail();

    const std::chrono::milliseconds check_interval_;
    std::chrono::milliseconds retry_{0};  // 0: registered
    bool settled_ = false;                // the naming service was reached at least once
    std::optional<BindingState> last_;
};

}  // namespace qv_demo
