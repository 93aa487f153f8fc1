// A bounded number of threads for work of which nobody knows how long it takes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace qv_notify {

class OperatorLog;

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
    /// Whether the next run may take long. At most a half of the threads, and one at least, are given to
    /// such jobs. Called on any thread.
    virtual bool Slow() const { return false; }

  private:
    friend class WorkPool;
    enum class Place { kIdle, kReady, kRunning, kRunningWantedAgain };
    // Both guarded by the pool's lock.
    Place m_place = Place::kIdle;
    std::optional<SteadyTime> m_wakes;
};

/// As many jobs run at a time as there are processors to run them, twice over, for more would only get in
/// each other's way. When jobs wait for longer than that takes, those that run wait for something themselves,
/// for a client far away or one that hangs; then more are run, up to the limit. Threads are started as they
/// are needed, and stay. Where the system has none to give, jobs wait for the threads that there are, or for
/// the next attempt, which is made after kPauseOfThreads. Any thread may call.
class WorkPool {
  public:
    static constexpr std::chrono::milliseconds kPauseOfThreads{1000};

    /// Starts a thread with that work; throws std::system_error when there is none to be had.
    using ThreadStart = std::function<std::thread(std::function<void()> work)>;
    static std::thread StartThread(std::function<void()> work) { return std::thread(std::move(work)); }

    /// At least one thread, even for a limit of 0. `log` outlives the pool and hears of threads that can't be
    /// had; null: nobody does. Throws std::system_error when there is no thread for the time either.
    explicit WorkPool(std::size_t max_threads, OperatorLog* log = nullptr, ThreadStart start = StartThread);
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
    /// A job waits so long for those that run before it counts as held up by them.
    static constexpr std::chrono::milliseconds kPatience{2};

    struct Waiting {
        std::shared_ptr<Job> job;
        SteadyTime since;
    };
    struct Assigned {
        std::shared_ptr<Job> job;
        bool slow = false;
    };

    void Work();
    bool TakeTask(Assigned& task);
    void KeepTime();
    void MakeReady(const std::shared_ptr<Job>& job);
    void AssignReady();
    bool Assign(const std::shared_ptr<Job>& job, bool slow);
    bool AddThread();
    bool ThreadToBeHad() const;
    void MoveDueToReady(SteadyTime now, std::vector<std::shared_ptr<Job>>& let_go);
    void LosePatience(SteadyTime now);
    std::optional<SteadyTime> NextMoment() const;
    void Finish(const Assigned& done, const Job::Next& next);
    std::size_t MostSlow() const;

    const std::size_t m_max_threads;
    const std::size_t m_least_at_a_time;
    OperatorLog* const m_log;
    const ThreadStart m_start;

    mutable std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_time;
    std::condition_variable m_idle;
    std::deque<Waiting> m_ready;
    std::deque<std::shared_ptr<Job>> m_ready_slow;
    std::deque<Assigned> m_assigned;  // a thread comes for each of them
    std::multimap<SteadyTime, std::shared_ptr<Job>> m_timers;
    std::vector<std::thread> m_threads;
    std::size_t m_free = 0;     // threads that run no job, those on their way to one included
    std::size_t m_running = 0;  // jobs assigned or running, without the slow ones
    std::size_t m_running_slow = 0;
    std::size_t m_at_a_time;
    std::optional<SteadyTime> m_no_thread_until;  // after a failure to start one
    std::optional<SteadyTime> m_timekeeper_wakes;
    bool m_stopped = false;
    std::thread m_timekeeper;
};

}  // namespace qv_notify
