// Keeps a message that somebody outside can provoke from flooding the log.
#pragma once

#include <chrono>
#include <optional>

namespace qv_orb {

/// Lets a burst of messages through per period and counts the others. Used by one thread at a time.
class RateLimit {
  public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr unsigned kBurst = 20;
    static constexpr std::chrono::seconds kPeriod{10};

    /// Nothing when the message of this moment is to be dropped; otherwise how many were dropped ahead of it.
    std::optional<unsigned long> Admit(Time now);

  private:
    Time period_begin_{};
    unsigned let_through_ = 0;
    unsigned long dropped_ = 0;
};

}  // namespace qv_orb
