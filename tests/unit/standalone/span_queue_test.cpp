#include "standalone/span_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <thread>

using qv_standalone::SpanQueue;
using testing::ElementsAre;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t kAll = 1000000;

std::vector<std::string> TakeNow(SpanQueue& queue, std::size_t max = kAll) {
    return queue.Take(max, 0s, 0s);
}

}  // namespace

TEST(SpanQueue, GivesTheOldestFirst) {
    SpanQueue queue(10);
    for (const char* const span : {"a", "b", "c"}) {
        EXPECT_TRUE(queue.Push(span));
    }
    EXPECT_THAT(TakeNow(queue, 2), ElementsAre("a", "b"));
    EXPECT_THAT(TakeNow(queue), ElementsAre("c"));
    EXPECT_THAT(TakeNow(queue), ElementsAre());
}

TEST(SpanQueue, DropsAndCountsWhatFindsNoRoom) {
    SpanQueue queue(2);
    queue.Push("a");
    queue.Push("b");
    EXPECT_FALSE(queue.Push("c"));
    EXPECT_FALSE(queue.Push("d"));
    queue.CountDropped(5);
    EXPECT_EQ(queue.TakeDropped(), 7U);
    EXPECT_EQ(queue.TakeDropped(), 0U);
    EXPECT_THAT(TakeNow(queue), ElementsAre("a", "b"));
    EXPECT_TRUE(queue.Push("e"));
}

TEST(SpanQueue, AcceptsNothingOnceClosedAndGivesWhatItHas) {
    SpanQueue queue(10);
    queue.Push("a");
    queue.Close();
    EXPECT_FALSE(queue.Push("b"));
    EXPECT_EQ(queue.TakeDropped(), 1U);
    EXPECT_FALSE(queue.Finished());
    EXPECT_THAT(queue.Take(kAll, 1h, 1h), ElementsAre("a"));
    EXPECT_TRUE(queue.Finished());
    EXPECT_THAT(queue.Take(kAll, 1h, 1h), ElementsAre());
}

TEST(SpanQueue, ASpanWakesTheSleepingTaker) {
    SpanQueue queue(10);
    auto taken = std::async(std::launch::async, [&] { return queue.Take(kAll, 1h, 0s); });
    queue.Push("a");
    EXPECT_THAT(taken.get(), ElementsAre("a"));
}

TEST(SpanQueue, AHalfFullQueueWaitsForNoCompany) {
    SpanQueue queue(4);
    auto taken = std::async(std::launch::async, [&] { return queue.Take(kAll, 1h, 1h); });
    queue.Push("a");
    queue.Push("b");
    EXPECT_THAT(taken.get(), ElementsAre("a", "b"));
}

TEST(SpanQueue, TheEndWakesTheSleepingTaker) {
    SpanQueue idle(10);
    auto nothing = std::async(std::launch::async, [&] { return idle.Take(kAll, 1h, 1h); });
    idle.Close();
    EXPECT_THAT(nothing.get(), ElementsAre());
    SpanQueue gathering(10);
    auto one = std::async(std::launch::async, [&] { return gathering.Take(kAll, 1h, 1h); });
    gathering.Push("a");
    gathering.Close();
    EXPECT_THAT(one.get(), ElementsAre("a"));
}

TEST(SpanQueue, ASpanWaitsForCompanyOnlySoLong) {
    SpanQueue queue(100);
    queue.Push("a");
    const auto begin = Clock::now();
    EXPECT_THAT(queue.Take(kAll, 1h, 30ms), ElementsAre("a"));
    EXPECT_GE(Clock::now() - begin, 30ms);
}

TEST(SpanQueue, ManyThreadsLoseNothing) {
    constexpr int kThreads = 4;
    constexpr int kEach = 5000;
    SpanQueue queue(std::size_t{kThreads} * kEach);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&queue] {
            for (int n = 0; n < kEach; ++n) {
                queue.Push("span");
            }
        });
    }
    std::size_t taken = 0;
    while (taken < std::size_t{kThreads} * kEach) {
        const auto spans = queue.Take(777, 10s, 1ms);
        ASSERT_FALSE(spans.empty());
        taken += spans.size();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(queue.TakeDropped(), 0U);
    EXPECT_THAT(TakeNow(queue), ElementsAre());
}
