#pragma once

#include <chrono>
#include <functional>

namespace qv_demo {

using TimePoint = std::chrono::steady_clock::time_point;

/// What time it is. Passed in wherever something expires, so that a test moves time by hand.
using Clock = std::function<TimePoint()>;

inline Clock SteadyClock() {
    return [] { return std::chrono::steady_clock::now(); };
}

}  // namespace qv_demo
