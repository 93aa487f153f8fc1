#include "notification/notification_id.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include "notification/supplier.h"
#include "tests/support/scoped_env.h"

namespace qv_test {
namespace {

/// 14 November 2023, 09:41:02 UTC.
constexpr time_t kMoment = 1699954862;

std::string NextOf(NS_CORBA::NotificationID& ids) {
    std::string id = "before";
    ids.Next(id);
    return id;
}

TEST(NotificationId, IsMonthDayTimeAndANumberFromOneOn) {
    const ScopedEnv zone("TZ", "UTC0");
    tzset();
    NS_CORBA::NotificationID ids(kMoment);
    EXPECT_EQ("11140941021", NextOf(ids));
    EXPECT_EQ("11140941022", NextOf(ids));
    for (int i = 3; i < 10; ++i) {
        NextOf(ids);
    }
    EXPECT_EQ("111409410210", NextOf(ids));
}

TEST(NotificationId, ShowsLocalTime) {
    const ScopedEnv zone("TZ", "EAST-3");
    tzset();
    NS_CORBA::NotificationID ids(kMoment);
    EXPECT_EQ("11141241021", NextOf(ids));
}

TEST(NotificationId, PadsEveryField) {
    const ScopedEnv zone("TZ", "UTC0");
    tzset();
    NS_CORBA::NotificationID ids(1672531200);  // 1 January 2023, midnight
    EXPECT_EQ("01010000001", NextOf(ids));
}

TEST(NotificationId, TheProcessHasOneRow) {
    std::string first;
    std::string second;
    NS_CORBA::GetNotificationID(first);
    NS_CORBA::GetNotificationID(second);
    ASSERT_GT(first.size(), 10u);
    EXPECT_TRUE(std::all_of(first.begin(), first.end(), [](unsigned char c) { return std::isdigit(c); }));
    EXPECT_EQ(first.substr(0, 10), second.substr(0, 10));
    EXPECT_EQ(std::stoul(first.substr(10)) + 1, std::stoul(second.substr(10)));
}

TEST(NotificationId, ThreadsNeverShareOne) {
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kEach = 2000;
    std::vector<std::vector<std::string>> made(kThreads);
    std::vector<std::thread> threads;
    for (std::vector<std::string>& mine : made) {
        threads.emplace_back([&mine] {
            mine.resize(kEach);
            for (std::string& id : mine) {
                NS_CORBA::GetNotificationID(id);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::string> all;
    for (const std::vector<std::string>& mine : made) {
        all.insert(mine.begin(), mine.end());
    }
    EXPECT_EQ(kThreads * kEach, all.size());
}

}  // namespace
}  // namespace qv_test
