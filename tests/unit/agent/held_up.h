#pragma once

#include <chrono>
#include <future>

namespace qv_test {

/// Does `work` on another thread, gives it a moment, and then calls `release` on this one. True when the work
/// was not done before that; returns when it is.
template <class Release, class Work>
bool IsHeldUpUntil(Release release, Work work) {
    std::promise<void> begun;
    std::future<void> done = std::async(std::launch::async, [&] {
        begun.set_value();
        work();
    });
    begun.get_future().wait();
    const bool held = done.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout;
    release();
    done.get();
    return held;
}

}  // namespace qv_test
