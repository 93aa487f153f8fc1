// Many checks at once, and what a slow configuration service or name resolution does to them.

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "request/aclmgr.h"
#include "tests/support/wait_for.h"
#include "tests/unit/request/acl_probe.h"
#include "tests/unit/request/slow_platform.h"

namespace {

using NS_UTIL::IPAcl;
using NS_UTIL::IPAclProbe;
using qv_test::g_platform;

constexpr unsigned int kFirst = 0x0A000001;   // 10.0.0.1
constexpr unsigned int kSecond = 0x0A000002;  // 10.0.0.2
constexpr int kThreads = 8;

/// Holds whoever passes until it is opened.
class Barrier {
  public:
    void Pass() {
        std::unique_lock<std::mutex> lock(m_lock);
        ++m_waiting;
        m_opened.wait(lock, [this] { return m_open; });
    }
    void Open() {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_open = true;
        m_opened.notify_all();
    }
    int Waiting() {
        const std::lock_guard<std::mutex> lock(m_lock);
        return m_waiting;
    }

  private:
    std::mutex m_lock;
    std::condition_variable m_opened;
    bool m_open = false;
    int m_waiting = 0;
};

class IPAclThreadsTest : public ::testing::Test {
  protected:
    IPAclThreadsTest() {
        g_platform.Reset();
        g_platform.addresses = {"10.0.0.1"};
        acl.Init("", 30, NS_UTIL::IPACL_OSS);
    }
    ~IPAclThreadsTest() override { g_platform.Reset(); }

    void Start(int count, std::function<void()> work) {
        for (int i = 0; i < count; ++i) {
            m_threads.emplace_back(work);
        }
    }
    void Join() {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }

    qv_test::AclClock clock;
    IPAcl acl;

  private:
    std::vector<std::thread> m_threads;
};

TEST_F(IPAclThreadsTest, ChecksRunBesideEachOther) {
    ASSERT_TRUE(acl.IsValidIP(kFirst));
    ASSERT_EQ(IPAclProbe::TableLock(acl).acquire_read(), 0);
    std::atomic<int> allowed{0};
    Start(kThreads, [&] { allowed += acl.IsValidIP(kFirst) ? 1 : 0; });
    Join();  // though the lock is held for reading all the while
    EXPECT_EQ(allowed, kThreads);
    IPAclProbe::TableLock(acl).release();
}

TEST_F(IPAclThreadsTest, ASlowRefreshIsDoneOnceAndHoldsUpAllChecks) {
    Barrier barrier;
    g_platform.onList = [&] { barrier.Pass(); };
    std::atomic<int> started{0};
    std::atomic<int> allowed{0};
    std::atomic<int> refused{0};
    Start(kThreads, [&] {
        ++started;
        ++(acl.IsValidIP(kFirst) ? allowed : refused);
        ++(acl.IsValidIP(kSecond) ? allowed : refused);
    });
    ASSERT_TRUE(qv_test::WaitFor([&] { return started == kThreads && barrier.Waiting() == 1; }));
    EXPECT_EQ(allowed + refused, 0);
    barrier.Open();
    Join();
    EXPECT_EQ(g_platform.lists, 1);
    EXPECT_EQ(allowed, kThreads);
    EXPECT_EQ(refused, kThreads) << "nobody saw the list while it was empty";
}

TEST_F(IPAclThreadsTest, ASlowNameResolutionHoldsUpTheChecks) {
    Barrier barrier;
    g_platform.addresses = {"oss.test"};
    g_platform.onResolution = [&] { barrier.Pass(); };
    std::atomic<int> done{0};
    Start(2, [&] {
        EXPECT_TRUE(acl.IsValidIP(0x0A010203));
        ++done;
    });
    ASSERT_TRUE(qv_test::WaitFor([&] { return barrier.Waiting() == 1; }));
    EXPECT_NE(IPAclProbe::TableLock(acl).tryacquire_read(), 0);
    EXPECT_EQ(done, 0);
    barrier.Open();
    Join();
    EXPECT_EQ(done, 2);
    EXPECT_EQ(g_platform.resolutions, 1);
}

TEST_F(IPAclThreadsTest, RefreshesUnderLoadNeverLetAnUnlistedAddressIn) {
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::atomic<long> checks{0};
    ASSERT_TRUE(acl.IsValidIP(kFirst));
    Start(kThreads, [&] {
        while (!stop) {
            wrong += acl.IsValidIP(kFirst) ? 0 : 1;
            wrong += acl.IsValidIP(kSecond) ? 1 : 0;
            ++checks;
        }
    });
    ASSERT_TRUE(qv_test::WaitFor([&] { return checks > 0; }));
    for (int refresh = 0; refresh < 50; ++refresh) {
        clock.Advance(31);
        acl.UpdateOssIp();  // back once somebody has done this refresh
    }
    stop = true;
    Join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(g_platform.lists, 51) << "once per period, whatever the number of checks";
}

}  // namespace
