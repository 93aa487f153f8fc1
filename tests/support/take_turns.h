#pragma once

#include <mutex>

namespace qv_test {

/// Orders what a test's thread and the ORB's threads do to the same variables. They take turns, but through
/// sockets and another process, where tools that look for data races don't see it.
inline void TakeTurns() {
    static std::mutex turn;
    const std::lock_guard<std::mutex> taken(turn);
}

}  // namespace qv_test
