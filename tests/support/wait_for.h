#pragma once

#include <chrono>
#include <thread>

namespace qv_test {

/// Asks `condition` again and again until it holds; false when it doesn't within `timeout`.
template <class Condition>
bool WaitFor(Condition condition, std::chrono::milliseconds timeout = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace qv_test
