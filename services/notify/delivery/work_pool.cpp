#include "services/notify/delivery/work_pool.h"

#include <algorithm>
#include <utility>

namespace qv_notify {

WorkPool::WorkPool(std::size_t max_threads) : m_max_threads(std::max<std::size_t>(1, max_threads)) {}

WorkPool::~WorkPool() {
    Stop();
    // No thread is started once the pool is stopped.
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

void WorkPool::Schedule(const std::shared_ptr<Job>& job) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_stopped) {
        return;
    }
    if (job->m_place == Job::Place::kIdle) {
        MakeReady(job);
    } else if (job->m_place == Job::Place::kRunning) {
        job->m_place = Job::Place::kRunningWantedAgain;
    }
}

// A timer that the job had is left behind; it finds out when it fires.
void WorkPool::MakeReady(const std::shared_ptr<Job>& job) {
    job->m_place = Job::Place::kReady;
    job->m_wakes.reset();
    (job->Slow() ? m_ready_slow : m_ready).push_back(job);
    if (m_waiting > 0) {
        m_work.notify_one();
    } else if (m_threads.size() < m_max_threads) {
        m_threads.emplace_back([this] { Work(); });
    }
}

void WorkPool::Stop() {
    std::deque<std::shared_ptr<Job>> ready;
    std::deque<std::shared_ptr<Job>> ready_slow;
    std::multimap<SteadyTime, std::shared_ptr<Job>> timers;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_stopped = true;
    // Destroyed behind the guard: the last owner of a job may be here.
    ready.swap(m_ready);
    ready_slow.swap(m_ready_slow);
    timers.swap(m_timers);
    m_work.notify_all();
}

bool WorkPool::WaitUntilIdle(SteadyTime deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_idle.wait_until(lock, deadline,
                             [this] { return m_running == 0 && m_ready.empty() && m_ready_slow.empty(); });
}

std::size_t WorkPool::Threads() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_threads.size();
}

void WorkPool::Work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopped) {
        MoveDueToReady(std::chrono::steady_clock::now());
        if (!AnythingToTake()) {
            ++m_waiting;
            if (m_timers.empty()) {
                m_work.wait(lock);
            } else {
                m_work.wait_until(lock, SteadyTime(m_timers.begin()->first));
            }
            --m_waiting;
            continue;
        }
        bool slow = false;
        const std::shared_ptr<Job> job = TakeReady(slow);
        lock.unlock();
        const Job::Next next = job->Run();
        lock.lock();
        --m_running;
        m_running_slow -= slow ? 1 : 0;
        Finish(job, next);
        if (m_running == 0) {
            m_idle.notify_all();
        }
    }
}

std::shared_ptr<Job> WorkPool::TakeReady(bool& slow) {
    slow = m_ready.empty();
    std::deque<std::shared_ptr<Job>>& from = slow ? m_ready_slow : m_ready;
    std::shared_ptr<Job> job = std::move(from.front());
    from.pop_front();
    job->m_place = Job::Place::kRunning;
    ++m_running;
    m_running_slow += slow ? 1 : 0;
    return job;
}

void WorkPool::MoveDueToReady(SteadyTime now) {
    while (!m_timers.empty() && m_timers.begin()->first <= now) {
        const SteadyTime due = m_timers.begin()->first;
        const std::shared_ptr<Job> job = std::move(m_timers.begin()->second);
        m_timers.erase(m_timers.begin());
        if (job->m_place == Job::Place::kIdle && job->m_wakes == due) {
            MakeReady(job);
        }
    }
}

void WorkPool::Finish(const std::shared_ptr<Job>& job, const Job::Next& next) {
    const bool again = job->m_place == Job::Place::kRunningWantedAgain;
    job->m_place = Job::Place::kIdle;
    if (m_stopped) {
        return;
    }
    if (again || (next.at && *next.at == SteadyTime::min())) {
        MakeReady(job);
    } else if (next.at) {
        job->m_wakes = next.at;
        m_timers.emplace(*next.at, job);
        m_work.notify_one();  // whoever waits may wait too long
    }
}

}  // namespace qv_notify
