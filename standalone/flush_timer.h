#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace qv_standalone {

/// Calls a function again and again, with `interval` between, on a thread of its own that takes no signals.
/// Ends, and waits for the thread, when it goes.
class FlushTimer {
  public:
    FlushTimer(std::chrono::milliseconds interval, std::function<void()> action);
    ~FlushTimer();
    FlushTimer(const FlushTimer&) = delete;
    FlushTimer& operator=(const FlushTimer&) = delete;

  private:
    void Run();

    const std::chrono::milliseconds m_interval;
    const std::function<void()> m_action;
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::thread m_thread;
};

}  // namespace qv_standalone
