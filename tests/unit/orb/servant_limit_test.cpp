// The bound on threads in servants, by itself.

#include "servant_limit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using qv_orb::ServantLimit;

TEST(ServantLimitTest, NoneIsSetAtFirst) {
    ServantLimit limit;
    EXPECT_FALSE(limit.limited());
    limit.SetLimit(1);
    EXPECT_TRUE(limit.limited());
}

TEST(ServantLimitTest, WhoComesBackGoesAheadOfWhoEnters) {
    ServantLimit limit;
    limit.SetLimit(1);
    limit.Enter();
    limit.Leave();  // out for a call of its own
    limit.Enter();  // somebody else's turn meanwhile
    std::atomic<bool> returned{false};
    std::atomic<bool> entered{false};
    std::thread entering([&] {
        limit.Enter();
        entered = true;
        EXPECT_TRUE(returned);
        limit.Leave();
    });
    std::thread returning([&] {
        limit.Return();
        EXPECT_FALSE(entered);
        returned = true;
        limit.Leave();
    });
    while (limit.returning() == 0) {
        std::this_thread::yield();
    }
    // The other waits too, or will find the place taken: nobody can be in before it is free.
    EXPECT_FALSE(returned || entered);
    limit.Leave();
    entering.join();
    returning.join();
    EXPECT_TRUE(returned && entered);
}

TEST(ServantLimitTest, ManyThreadsThatComeAndGoNeverExceedItAndAllFinish) {
    for (const unsigned bound : {1u, 2u, 3u}) {
        ServantLimit limit;
        limit.SetLimit(bound);
        std::atomic<unsigned> inside{0};
        std::atomic<unsigned> highest{0};
        const auto in = [&] {
            const unsigned now = ++inside;
            unsigned seen = highest;
            while (now > seen && !highest.compare_exchange_weak(seen, now)) {
            }
        };
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < 500; ++round) {
                    limit.Enter();
                    in();
                    --inside;
                    limit.Leave();
                    limit.Return();
                    in();
                    --inside;
                    limit.Leave();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_LE(highest, bound);
        EXPECT_EQ(inside, 0u);
    }
}

}  // namespace
