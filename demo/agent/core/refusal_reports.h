#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "demo/agent/core/clock.h"

namespace qv_demo {

/// Decides which refused request is worth a line, so that a stranger who tries again and again can't fill the
/// logs: the first one of a host, and then one a minute with the number of those since the last line. Hosts
/// beyond kMostHosts in one minute are counted together, under the name of one of them. Thread-safe.
class RefusalReports {
  public:
    static constexpr std::chrono::seconds kInterval{60};
    static constexpr std::size_t kMostHosts = 64;

    explicit RefusalReports(Clock clock) : clock_(std::move(clock)) {}

    /// Counts a refused request of `host`. The number to report now, or nothing.
    std::optional<std::uint64_t> Count(const std::string& host);

  private:
    struct Entry {
        TimePoint reported;
        std::uint64_t held_back = 0;
    };
    void ForgetQuietHosts(TimePoint now);

    const Clock clock_;
    std::mutex mutex_;
    std::map<std::string, Entry> hosts_;
};

}  // namespace qv_demo
