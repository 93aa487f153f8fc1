#include "standalone/flush_timer.h"

#include <utility>

#include "standalone/signals_blocked.h"

namespace qv_standalone {

FlushTimer::FlushTimer(std::chrono::milliseconds interval, std::function<void()> action,
                       std::function<void()> soonAction)
    : m_interval(interval), m_action(std::move(action)), m_soonAction(std::move(soonAction)) {
    const SignalsBlocked blocked;
    m_thread = std::thread(&FlushTimer::Run, this);
}

FlushTimer::~FlushTimer() {
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_stop = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void FlushTimer::Soon() noexcept {
    if (m_soon.exchange(true)) {
        return;
    }
    std::lock_guard<std::mutex> guard(m_lock);  // so that the thread isn't between its look and its sleep
    m_wake.notify_all();
}

void FlushTimer::Run() {
    using Clock = std::chrono::steady_clock;
    std::unique_lock<std::mutex> lock(m_lock);
    Clock::time_point next = Clock::now() + m_interval;
    while (!m_stop) {
        m_wake.wait_until(lock, next, [this] { return m_stop || m_soon; });
        if (m_soon && !m_stop) {
            RunSoon(lock);
        }
        if (Clock::now() < next || m_stop) {
            continue;
        }
        lock.unlock();
        m_action();
        lock.lock();
        next = Clock::now() + m_interval;
    }
}

/// Waits for company first, so that a crowd of askers costs one call.
void FlushTimer::RunSoon(std::unique_lock<std::mutex>& lock) {
    m_wake.wait_for(lock, kSoon, [this] { return m_stop; });
    m_soon = false;
    lock.unlock();
    m_soonAction();
    lock.lock();
}

}  // namespace qv_standalone
