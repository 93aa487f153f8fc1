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

FlushTimer::FlushTimer(std::chrono::milliseconds interval, std::function<void()> action)
    : m_interval(interval), m_action(std::move(action)) {
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

void FlushTimer::Run() {
    std::unique_lock<std::mutex> lock(m_lock);
    while (!m_wake.wait_for(lock, m_interval, [this] { return m_stop; })) {
        lock.unlock();
        m_action();
        lock.lock();
    }
}

}  // namespace qv_standalone
