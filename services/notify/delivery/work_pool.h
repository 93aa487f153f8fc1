// A bounded number of threads for work of which nobody knows how long it takes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace qv_notify {

using SteadyTime = std::chrono::steady_clock::time_point;

/// Something that a pool runs again and again, on one thread at a time.
class Job : public std::enable_shared_from_this<Job> {
  public:
    /// When a job wants to run next: on the next Schedule, or by itself from `at` on.
    struct Next {
        std::optional<SteadyTime> at;
        static Next OnSchedule() { return {}; }
        static Next Now() { return {SteadyTime::min()}; }
        static Next At(SteadyTime time) { return {time}; }
    };

    Job() = default;
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    virtual ~Job() = default;

    /// Does a share of the work and returns soon, so that others get their turn. Must not throw.
    virtual Next Run() = 0;
    /// Whether the next run may take long. At most a half of the threads are given to such jobs. Called on
    /// any thread.
    virtual bool Slow() const { return false; }

  private:
    friend class WorkPool;
    enum class Place { kIdle, kReady, kRunning, kRunningWantedAgain };
    // Both guarded by the pool's lock.
    Place m_place = Place::kIdle;
    std::optional<SteadyTime> m_wakes;
};

/// Threads are started as they are needed, up to the limit, and stay. Any thread may call.
class WorkPool {
  public:
    /// At least one thread, even for a limit of 0.
    explicit WorkPool(std::size_t max_threads);
    /// Stops as Stop does, and waits for the threads.
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    /// Has the job run soon, once more if it is running now. The pool shares its ownership until then.
    void Schedule(const std::shared_ptr<Job>& job);

    /// No job is started any more, and those that wait are let go.
    void Stop();
    /// Waits until no job runs, at most until `deadline`; false when one still does.
    bool WaitUntilIdle(SteadyTime deadline);

    std::size_t Threads() const;

  private:
    void Work();
    std::shared_ptr<Job> TakeReady(bool& slow);
    void MakeReady(const std::shared_ptr<Job>& job);
    void MoveDueToReady(SteadyTime now);
    void Finish(const std::shared_ptr<Job>& job, const Job::Next& next);
    bool SlowMayRun() const { return m_running_slow < (m_max_threads + 1) / 2; }
    bool AnythingToTake() const { return !m_ready.empty() || (!m_ready_slow.empty() && SlowMayRun()); }

    const std::size_t m_max_threads;

    mutable std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_idle;
    std::deque<std::shared_ptr<Job>> m_ready;
    std::deque<std::shared_ptr<Job>> m_ready_slow;
    std::multimap<SteadyTime, std::shared_ptr<Job>> m_timers;
    std::vector<std::thread> m_threads;
    std::size_t m_waiting = 0;
    std::size_t m_running = 0;
    std::size_t m_running_slow = 0;
    bool m_stopped = false;
};

}  // namespace qv_notify
