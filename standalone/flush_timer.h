#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace qv_standalone {

/// Calls a function again and again, with `interval` between, and another one soon after it was asked for, on
/// a thread of its own that takes no signals. Ends, and waits for the thread, when it goes.
class FlushTimer {
  public:
    /// What was asked for is done so long after that, together with what is asked for meanwhile.
    static constexpr std::chrono::milliseconds kSoon{10};

    FlushTimer(
        std::chrono::milliseconds interval, std::function<void()> action,
        std::function<void()> soonAction = [] {});
    ~FlushTimer();
    FlushTimer(const FlushTimer&) = delete;
    FlushTimer& operator=(const FlushTimer&) = delete;

    /// Asks for the other function. Any thread; it costs next to nothing while it was asked for already.
    void Soon() noexcept;

  private:
    void Run();
    void RunSoon(std::unique_lock<std::mutex>& lock);

    const std::chrono::milliseconds m_interval;
    const std::function<void()> m_action;
    const std::function<void()> m_soonAction;
    std::atomic<bool> m_soon{false};
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::thread m_thread;
};

}  // namespace qv_standalone
