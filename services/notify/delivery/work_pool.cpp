#include "services/notify/delivery/work_pool.h"

#include <sched.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "services/notify/delivery/operator_log.h"

namespace qv_notify {

namespace {

// A thread that is woken takes the processor from the one that woke it, which here is about to answer a
// supplier. The batch policy makes it wait for its turn; where it isn't to be had, answers are slower and
// that is all.
void LetOthersGoAhead() {
    const sched_param parameters{};
    sched_setscheduler(0, SCHED_BATCH, &parameters);
}

}  // namespace

WorkPool::WorkPool(std::size_t max_threads, OperatorLog* log, ThreadStart start)
    : m_max_threads(std::max<std::size_t>(1, max_threads)),
      m_least_at_a_time(std::min<std::size_t>(
          m_max_threads, std::size_t{2} * std::max(1U, std::thread::hardware_concurrency()))),
      m_log(log),
      m_start(std::move(start)),
      m_at_a_time(m_least_at_a_time) {
    m_threads.reserve(m_max_threads);
    m_timekeeper = std::thread([this] { KeepTime(); });
}

WorkPool::~WorkPool() {
    Stop();
    m_timekeeper.join();
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
        AssignReady();
    } else if (job->m_place == Job::Place::kRunning) {
        job->m_place = Job::Place::kRunningWantedAgain;
    }
}

// A timer that the job had is left behind; it finds out when it fires.
void WorkPool::MakeReady(const std::shared_ptr<Job>& job) {
    job->m_place = Job::Place::kReady;
    job->m_wakes.reset();
    if (job->Slow()) {
        m_ready_slow.push_back(job);
    } else {
        m_ready.push_back({job, std::chrono::steady_clock::now()});
    }
}

void WorkPool::AssignReady() {
    while (!m_ready.empty() && m_running < m_at_a_time && ThreadToBeHad() &&
           Assign(m_ready.front().job, false)) {
        m_ready.pop_front();
    }
    while (!m_ready_slow.empty() && m_running_slow < MostSlow() && ThreadToBeHad() &&
           Assign(m_ready_slow.front(), true)) {
        m_ready_slow.pop_front();
    }
    if (!m_ready.empty() && ThreadToBeHad() &&
        (!m_timekeeper_wakes || *m_timekeeper_wakes > m_ready.front().since + kPatience)) {
        m_time.notify_one();
    }
}

bool WorkPool::ThreadToBeHad() const {
    return m_free > m_assigned.size() || (m_threads.size() < m_max_threads && !m_no_thread_until);
}

// False when there is no thread for the job, which then stays where it waits.
bool WorkPool::Assign(const std::shared_ptr<Job>& job, bool slow) {
    const bool one_is_free = m_assigned.size() < m_free;
    if (!one_is_free && !AddThread()) {
        return false;
    }
    ++(slow ? m_running_slow : m_running);
    job->m_place = Job::Place::kRunning;
    m_assigned.push_back({job, slow});
    if (one_is_free) {
        m_work.notify_one();
    }
    return true;
}

// The system may have no thread to give: then no more are asked for until the timekeeper says so.
bool WorkPool::AddThread() {
    try {
        m_threads.push_back(m_start([this] { Work(); }));
        ++m_free;
        return true;
    } catch (const std::system_error& error) {
        m_no_thread_until = std::chrono::steady_clock::now() + kPauseOfThreads;
        m_time.notify_one();
        if (m_log != nullptr) {
            m_log->Tell("threads", std::string("no thread can be started (") + error.code().message() +
                                       "): work goes on with " + std::to_string(m_threads.size()) + " of " +
                                       std::to_string(m_max_threads) +
                                       ", and what is too much for them waits. Raise the limit of tasks "
                                       "(TasksMax, ulimit -u) or lower --threads.");
        }
        return false;
    }
}

std::size_t WorkPool::MostSlow() const {
    return std::max<std::size_t>(1, m_max_threads / 2);
}

void WorkPool::Stop() {
    std::deque<Waiting> ready;
    std::deque<std::shared_ptr<Job>> ready_slow;
    std::deque<Assigned> assigned;
    std::multimap<SteadyTime, std::shared_ptr<Job>> timers;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_stopped = true;
    // Destroyed behind the guard: the last owner of a job may be here.
    ready.swap(m_ready);
    ready_slow.swap(m_ready_slow);
    assigned.swap(m_assigned);
    for (const Assigned& one : assigned) {
        --(one.slow ? m_running_slow : m_running);
    }
    timers.swap(m_timers);
    m_work.notify_all();
    m_time.notify_all();
    m_idle.notify_all();
}

bool WorkPool::WaitUntilIdle(SteadyTime deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_idle.wait_until(lock, deadline, [this] {
        return m_running + m_running_slow == 0 && m_ready.empty() && m_ready_slow.empty();
    });
}

std::size_t WorkPool::Threads() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_threads.size();
}

// A thread counts as free from its making on.
void WorkPool::Work() {
    LetOthersGoAhead();
    Assigned task;
    while (TakeTask(task)) {
        const Job::Next next = task.job->Run();
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            Finish(task, next);
            ++m_free;
            AssignReady();
            if (m_running + m_running_slow == 0) {
                m_idle.notify_all();
            }
        }
        task.job.reset();  // without the lock: this may be its end, which may need the pool
    }
}

bool WorkPool::TakeTask(Assigned& task) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_work.wait(lock, [this] { return m_stopped || !m_assigned.empty(); });
    if (m_stopped) {
        return false;
    }
    task = std::move(m_assigned.front());
    m_assigned.pop_front();
    --m_free;
    return true;
}

void WorkPool::Finish(const Assigned& done, const Job::Next& next) {
    --(done.slow ? m_running_slow : m_running);
    if (m_at_a_time > m_least_at_a_time && m_running < m_at_a_time / 2) {
        --m_at_a_time;
    }
    const bool again = done.job->m_place == Job::Place::kRunningWantedAgain;
    done.job->m_place = Job::Place::kIdle;
    if (m_stopped) {
        return;
    }
    if (again || (next.at && *next.at == SteadyTime::min())) {
        MakeReady(done.job);
    } else if (next.at) {
        done.job->m_wakes = next.at;
        m_timers.emplace(*next.at, done.job);
        if (!m_timekeeper_wakes || *next.at < *m_timekeeper_wakes) {
            m_time.notify_one();
        }
    }
}

void WorkPool::KeepTime() {
    std::vector<std::shared_ptr<Job>> let_go;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stopped) {
        if (!let_go.empty()) {
            lock.unlock();
            let_go.clear();
            lock.lock();
            continue;
        }
        m_timekeeper_wakes = NextMoment();
        if (m_timekeeper_wakes) {
            m_time.wait_until(lock, SteadyTime(*m_timekeeper_wakes));
        } else {
            m_time.wait(lock);
        }
        const SteadyTime now = std::chrono::steady_clock::now();
        if (m_no_thread_until && *m_no_thread_until <= now) {
            m_no_thread_until.reset();
        }
        MoveDueToReady(now, let_go);
        LosePatience(now);
        AssignReady();
    }
}

std::optional<SteadyTime> WorkPool::NextMoment() const {
    std::optional<SteadyTime> moment;
    if (!m_timers.empty()) {
        moment = m_timers.begin()->first;
    }
    // Without a thread to be had there is nothing to hurry for.
    if (!m_ready.empty() && ThreadToBeHad()) {
        const SteadyTime end = m_ready.front().since + kPatience;
        moment = moment ? std::min(*moment, end) : end;
    }
    if (m_no_thread_until) {
        moment = moment ? std::min(*moment, *m_no_thread_until) : m_no_thread_until;
    }
    return moment;
}

void WorkPool::MoveDueToReady(SteadyTime now, std::vector<std::shared_ptr<Job>>& let_go) {
    while (!m_timers.empty() && m_timers.begin()->first <= now) {
        const SteadyTime due = m_timers.begin()->first;
        let_go.push_back(std::move(m_timers.begin()->second));
        m_timers.erase(m_timers.begin());
        const std::shared_ptr<Job>& job = let_go.back();
        if (job->m_place == Job::Place::kIdle && job->m_wakes == due) {
            MakeReady(job);
        }
    }
}

// Those that run wait for something themselves.
void WorkPool::LosePatience(SteadyTime now) {
    if (!m_ready.empty() && now - m_ready.front().since >= kPatience && m_at_a_time <= m_running &&
        ThreadToBeHad()) {
        m_at_a_time = m_running + 1;
    }
}

}  // namespace qv_notify
