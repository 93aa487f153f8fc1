#include "standalone/flush_timer.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>

#include "tests/support/wait_for.h"

using qv_standalone::FlushTimer;

TEST(FlushTimer, CallsAgainAndAgainAndEnds) {
    std::atomic<int> calls{0};
    {
        const FlushTimer timer(std::chrono::milliseconds(1), [&calls] { ++calls; });
        EXPECT_TRUE(qv_test::WaitFor([&calls] { return calls >= 3; }));
    }
    const int atEnd = calls;
    EXPECT_EQ(calls, atEnd);
}

TEST(FlushTimer, EndsAtOnceHoweverLongTheInterval) {
    std::atomic<int> calls{0};
    {
        const FlushTimer timer(std::chrono::hours(1), [&calls] { ++calls; });
    }
    EXPECT_EQ(calls, 0);
}

TEST(FlushTimer, DoesSoonWhatIsAskedForWhileTheIntervalRuns) {
    std::atomic<int> calls{0};
    std::atomic<int> soon{0};
    FlushTimer timer(
        std::chrono::hours(1), [&calls] { ++calls; }, [&soon] { ++soon; });
    for (int i = 1; i <= 3; ++i) {
        timer.Soon();
        EXPECT_TRUE(qv_test::WaitFor([&] { return soon >= i; }));
    }
    EXPECT_EQ(calls, 0);
}

TEST(FlushTimer, ACrowdThatAsksCostsFewCalls) {
    std::atomic<int> soon{0};
    FlushTimer timer(
        std::chrono::hours(1), [] {}, [&soon] { ++soon; });
    for (int i = 0; i < 10000; ++i) {
        timer.Soon();
    }
    EXPECT_TRUE(qv_test::WaitFor([&] { return soon >= 1; }));
    EXPECT_LT(soon, 1000);
}

TEST(FlushTimer, BeingAskedAllTheTimeDoesNotStopTheInterval) {
    std::atomic<int> calls{0};
    FlushTimer timer(std::chrono::milliseconds(5), [&calls] { ++calls; });
    EXPECT_TRUE(qv_test::WaitFor([&] {
        timer.Soon();
        return calls >= 3;
    }));
}

TEST(FlushTimer, ItsThreadTakesNoSignals) {
    std::atomic<bool> asked{false};
    std::atomic<bool> blocked{false};
    {
        const FlushTimer timer(std::chrono::milliseconds(1), [&] {
            sigset_t mask;
            pthread_sigmask(SIG_BLOCK, nullptr, &mask);
            blocked = sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGINT) == 1;
            asked = true;
        });
        EXPECT_TRUE(qv_test::WaitFor([&asked] { return asked.load(); }));
    }
    EXPECT_TRUE(blocked);
    sigset_t own;
    pthread_sigmask(SIG_BLOCK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGTERM), 0);
}
