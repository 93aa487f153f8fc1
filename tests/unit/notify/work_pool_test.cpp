#include "services/notify/delivery/work_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "services/notify/delivery/operator_log.h"
#include "tests/support/wait_for.h"
#include "tests/unit/notify/gate.h"

namespace {

using namespace std::chrono_literals;
using qv_notify::Job;
using qv_notify::SteadyTime;
using qv_notify::WorkPool;
using qv_notify_test::Gate;
using qv_notify_test::OpensAtEnd;
using qv_test::WaitFor;

SteadyTime Now() {
    return std::chrono::steady_clock::now();
}

class TestJob : public Job {
  public:
    using Work = std::function<Next(int run)>;
    explicit TestJob(Work work, bool slow = false) : m_work(std::move(work)), m_slow(slow) {}

    Next Run() override {
        most_at_once = std::max(most_at_once.load(), ++at_once);
        const Next next = m_work(++runs);
        --at_once;
        return next;
    }
    bool Slow() const override { return m_slow; }

    std::atomic<int> runs{0};
    std::atomic<int> at_once{0};
    std::atomic<int> most_at_once{0};

  private:
    const Work m_work;
    const bool m_slow;
};

std::shared_ptr<TestJob> Quick() {
    return std::make_shared<TestJob>([](int) { return Job::Next::OnSchedule(); });
}

std::shared_ptr<TestJob> Hanging(Gate& gate, bool slow = false) {
    return std::make_shared<TestJob>(
        [&gate](int) {
            gate.Wait();
            return Job::Next::OnSchedule();
        },
        slow);
}

TEST(WorkPool, RunsAJobOnOneThreadAtATime) {
    WorkPool pool(8);
    const auto job = Quick();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 500; ++n) {
                pool.Schedule(job);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(pool.WaitUntilIdle(Now() + 30s));
    EXPECT_EQ(job->most_at_once, 1);
    EXPECT_GE(job->runs, 1);
}

TEST(WorkPool, RunsAJobOnceMoreThatIsWantedWhileItRuns) {
    Gate gate;
    WorkPool pool(2);
    const OpensAtEnd opens(gate);
    const auto job = Hanging(gate);
    pool.Schedule(job);
    ASSERT_TRUE(WaitFor([&] { return job->at_once == 1; }));
    pool.Schedule(job);
    pool.Schedule(job);
    gate.Open();
    EXPECT_TRUE(pool.WaitUntilIdle(Now() + 30s));
    EXPECT_EQ(job->runs, 2);
}

TEST(WorkPool, GoesOnAtOnceWithAJobThatWantsTo) {
    WorkPool pool(2);
    const auto job = std::make_shared<TestJob>(
        [](int run) { return run < 100 ? Job::Next::Now() : Job::Next::OnSchedule(); });
    pool.Schedule(job);
    EXPECT_TRUE(WaitFor([&] { return job->runs == 100; }));
}

TEST(WorkPool, StartsNoMoreThreadsThanItsLimit) {
    Gate gate;
    WorkPool pool(4);
    const OpensAtEnd opens(gate);
    std::vector<std::shared_ptr<TestJob>> jobs;
    for (int i = 0; i < 20; ++i) {
        jobs.push_back(Hanging(gate));
        pool.Schedule(jobs.back());
    }
    ASSERT_TRUE(WaitFor([&] { return jobs[3]->at_once == 1; }));
    EXPECT_EQ(pool.Threads(), 4U);
    EXPECT_EQ(jobs[4]->runs, 0);
    gate.Open();
    EXPECT_TRUE(WaitFor([&] { return jobs.back()->runs == 1; }));
    EXPECT_EQ(pool.Threads(), 4U);
}

TEST(WorkPool, HasAThreadEvenForALimitOfZero) {
    WorkPool pool(0);
    const auto job = Quick();
    pool.Schedule(job);
    EXPECT_TRUE(WaitFor([&] { return job->runs == 1; }));
    EXPECT_EQ(pool.Threads(), 1U);
}

// One thread waits, two jobs come at once: the one behind must not wait for the one in front.
TEST(WorkPool, NoJobWaitsBehindAnotherWhileThreadsMayBeStarted) {
    for (int round = 0; round < 50; ++round) {
        Gate gate;
        WorkPool pool(2);
        const OpensAtEnd opens(gate);
        const auto first = Quick();
        pool.Schedule(first);
        ASSERT_TRUE(pool.WaitUntilIdle(Now() + 30s));
        const auto hanging = Hanging(gate);
        const auto behind = Quick();
        pool.Schedule(hanging);
        pool.Schedule(behind);
        ASSERT_TRUE(WaitFor([&] { return behind->runs == 1; }, 10s)) << "round " << round;
    }
}

TEST(WorkPool, GivesAtMostHalfOfItsThreadsToSlowJobs) {
    Gate gate;
    WorkPool pool(4);
    const OpensAtEnd opens(gate);
    std::atomic<int> slow_at_once{0};
    std::vector<std::shared_ptr<TestJob>> slow;
    for (int i = 0; i < 10; ++i) {
        slow.push_back(std::make_shared<TestJob>(
            [&](int) {
                ++slow_at_once;
                gate.Wait();
                return Job::Next::OnSchedule();
            },
            true));
        pool.Schedule(slow.back());
    }
    ASSERT_TRUE(WaitFor([&] { return slow_at_once == 2; }));
    for (int i = 0; i < 20; ++i) {
        const auto quick = Quick();
        pool.Schedule(quick);
        ASSERT_TRUE(WaitFor([&] { return quick->runs == 1; }));
    }
    EXPECT_EQ(slow_at_once, 2);
    gate.Open();
    EXPECT_TRUE(WaitFor([&] { return slow_at_once == 10; }));
}

TEST(WorkPool, RunsASlowJobWithASingleThread) {
    WorkPool pool(1);
    const auto job = std::make_shared<TestJob>([](int) { return Job::Next::OnSchedule(); }, true);
    pool.Schedule(job);
    EXPECT_TRUE(WaitFor([&] { return job->runs == 1; }));
}

TEST(WorkPool, RunsAJobByItselfWhenItsTimeHasCome) {
    WorkPool pool(2);
    const SteadyTime due = Now() + 50ms;
    std::atomic<bool> early{false};
    const auto job = std::make_shared<TestJob>([&](int run) {
        early = early || (run == 2 && Now() < due);
        return run == 1 ? Job::Next::At(due) : Job::Next::OnSchedule();
    });
    pool.Schedule(job);
    EXPECT_TRUE(WaitFor([&] { return job->runs == 2; }));
    EXPECT_FALSE(early);
}

TEST(WorkPool, LooksAfterTimersWhileAllItsThreadsAreInCalls) {
    Gate gate;
    WorkPool pool(2);
    const OpensAtEnd opens(gate);
    const auto timed = std::make_shared<TestJob>(
        [](int run) { return run == 1 ? Job::Next::At(Now() + 100ms) : Job::Next::OnSchedule(); });
    pool.Schedule(timed);
    ASSERT_TRUE(WaitFor([&] { return timed->runs == 1 && timed->at_once == 0; }));
    const auto hanging = Hanging(gate);
    pool.Schedule(hanging);
    ASSERT_TRUE(WaitFor([&] { return hanging->at_once == 1; }));
    EXPECT_TRUE(WaitFor([&] { return timed->runs == 2; }, 10s));
}

TEST(WorkPool, ATimerIsVoidOnceTheJobHasRunForAnotherReason) {
    WorkPool pool(2);
    const SteadyTime start = Now();
    const auto job = std::make_shared<TestJob>(
        [&](int run) { return run == 1 ? Job::Next::At(start + 50ms) : Job::Next::OnSchedule(); });
    const auto later = std::make_shared<TestJob>(
        [&](int run) { return run == 1 ? Job::Next::At(start + 150ms) : Job::Next::OnSchedule(); });
    pool.Schedule(job);
    pool.Schedule(later);
    ASSERT_TRUE(WaitFor([&] { return job->runs >= 1; }));
    pool.Schedule(job);
    ASSERT_TRUE(WaitFor([&] { return later->runs == 2; }));
    EXPECT_EQ(job->runs, 2);
}

TEST(WorkPool, StartsNothingOnceItIsStopped) {
    Gate gate;
    WorkPool pool(1);
    const OpensAtEnd opens(gate);
    const auto hanging = Hanging(gate);
    auto waiting = Quick();
    const std::weak_ptr<TestJob> waits = waiting;
    pool.Schedule(hanging);
    pool.Schedule(waiting);
    ASSERT_TRUE(WaitFor([&] { return hanging->at_once == 1; }));
    waiting.reset();
    pool.Stop();
    EXPECT_TRUE(waits.expired());
    const auto late = Quick();
    pool.Schedule(late);
    EXPECT_FALSE(pool.WaitUntilIdle(Now() + 10ms));
    gate.Open();
    EXPECT_TRUE(pool.WaitUntilIdle(Now() + 30s));
    EXPECT_EQ(late->runs, 0);
}

// The pool may be the last owner of a job, whose end may need the pool.
TEST(WorkPool, LetsGoOfAJobWithoutItsLock) {
    class LooksAtThePool : public TestJob {
      public:
        LooksAtThePool(WorkPool& pool, std::atomic<std::size_t>& seen)
            : TestJob([](int) { return Next::OnSchedule(); }), m_pool(pool), m_seen(seen) {}
        ~LooksAtThePool() override { m_seen = m_pool.Threads(); }

      private:
        WorkPool& m_pool;
        std::atomic<std::size_t>& m_seen;
    };
    std::atomic<std::size_t> seen{0};
    WorkPool pool(1);
    pool.Schedule(std::make_shared<LooksAtThePool>(pool, seen));
    EXPECT_TRUE(WaitFor([&] { return seen == 1; }));
}

/// A system that gives threads as long as the test lets it.
class ScarceThreads : public testing::Test {
  protected:
    std::thread Start(std::function<void()> work) {
        if (left-- <= 0) {
            left = 0;
            ++refused;
            throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
        }
        return std::thread(std::move(work));
    }
    std::size_t Told() {
        const std::lock_guard<std::mutex> guard(mutex);
        return lines.size();
    }
    std::unique_ptr<WorkPool> MakePool() {
        return std::make_unique<WorkPool>(
            4, &log, [this](std::function<void()> work) { return Start(std::move(work)); });
    }

    std::atomic<int> left{0};
    std::atomic<int> refused{0};
    std::mutex mutex;
    std::vector<std::string> lines;
    qv_notify::OperatorLog log{[this](const std::string& line) {
        const std::lock_guard<std::mutex> guard(mutex);
        lines.push_back(line);
    }};
};

TEST_F(ScarceThreads, JobsWaitUntilThereIsAThread) {
    const auto pool = MakePool();
    const auto quick = Quick();
    const auto slow = std::make_shared<TestJob>([](int) { return Job::Next::OnSchedule(); }, true);
    pool->Schedule(quick);
    pool->Schedule(quick);
    pool->Schedule(slow);
    EXPECT_EQ(pool->Threads(), 0U);
    EXPECT_EQ(Told(), 1U);
    left = 1;
    EXPECT_TRUE(WaitFor([&] { return quick->runs == 1 && slow->runs == 1; }, 10s));
    ASSERT_TRUE(pool->WaitUntilIdle(Now() + 30s));
    EXPECT_EQ(quick->runs, 1);
    EXPECT_EQ(slow->runs, 1);
    EXPECT_EQ(pool->Threads(), 1U);
}

TEST_F(ScarceThreads, WorkGoesOnWithTheThreadsThereAre) {
    Gate gate;
    const auto pool = MakePool();
    const OpensAtEnd opens(gate);
    left = 1;
    const auto hanging = Hanging(gate);
    pool->Schedule(hanging);
    std::vector<std::shared_ptr<TestJob>> jobs;
    for (int i = 0; i < 10; ++i) {
        jobs.push_back(std::make_shared<TestJob>(
            [](int run) { return run < 3 ? Job::Next::Now() : Job::Next::OnSchedule(); }));
        pool->Schedule(jobs.back());
    }
    ASSERT_TRUE(WaitFor([&] { return hanging->at_once == 1 && refused > 0; }));
    gate.Open();
    ASSERT_TRUE(pool->WaitUntilIdle(Now() + 30s));
    for (const auto& job : jobs) {
        EXPECT_EQ(job->runs, 3);
        EXPECT_EQ(job->most_at_once, 1);
    }
    EXPECT_EQ(pool->Threads(), 1U);
}

TEST_F(ScarceThreads, ATimerThatFiresWithoutAThreadIsNotLost) {
    const auto pool = MakePool();
    Gate gate;
    const OpensAtEnd opens(gate);
    left = 1;
    const auto timed = std::make_shared<TestJob>(
        [](int run) { return run == 1 ? Job::Next::At(Now() + 50ms) : Job::Next::OnSchedule(); });
    pool->Schedule(timed);
    ASSERT_TRUE(pool->WaitUntilIdle(Now() + 30s));
    const auto hanging = Hanging(gate);
    pool->Schedule(hanging);
    ASSERT_TRUE(WaitFor([&] { return refused > 0; }));
    gate.Open();
    EXPECT_TRUE(WaitFor([&] { return timed->runs == 2; }));
}

}  // namespace
