#include "standalone/flush_timer.h"

#include <signal.h>

#include <utility>

namespace qv_standalone {
namespace {

/// Blocks all signals of the calling thread for a while; a thread started meanwhile inherits that.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &m_former);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t m_former{};
};

}  // namespace

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
