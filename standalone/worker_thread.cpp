#include "standalone/worker_thread.h"

#include <pthread.h>

#include <utility>

#include "standalone/signals_blocked.h"

namespace qv_standalone {

WorkerThread::~WorkerThread() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void WorkerThread::Start(const char* name, std::function<void()> work) {
    std::packaged_task<void()> task([name, work = std::move(work)] {
        pthread_setname_np(pthread_self(), name);
        work();
    });
    std::future<void> end = task.get_future();
    const SignalsBlocked blocked;
    m_thread = std::thread(std::move(task));
    m_end = std::move(end);
}

bool WorkerThread::WaitForEnd(std::chrono::steady_clock::time_point limit) {
    if (m_end.valid() && m_end.wait_until(limit) != std::future_status::ready) {
        return false;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return true;
}

}  // namespace qv_standalone
