#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/thread_context.h"

using NS_UTIL::ThreadContextInfo;

TEST(GenerateUUID, HasTheFormOfARandomUuid) {
    const char* const form = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";
    for (int i = 0; i < 100; ++i) {
        EXPECT_THAT(ThreadContextInfo::GenerateUUID(), testing::MatchesRegex(form));
    }
}

TEST(GenerateUUID, GivesAnotherOneEachTimeOnEachThread) {
    std::set<std::string> all;
    std::mutex lock;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                const std::string uuid = ThreadContextInfo::GenerateUUID();
                std::lock_guard<std::mutex> guard(lock);
                all.insert(uuid);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(all.size(), 4000U);
}
