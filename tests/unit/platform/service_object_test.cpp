#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/bundle_mgr.h"
#include "platform/log_service.h"
#include "platform/security_service.h"

namespace {

using NS_BUNDLEMGR1::NULLServiceInterface;
using NS_LOG_SERVICE1::LogSvcInterface;
using NS_SECURITY_SERVICE1::SecurityIF;

}  // namespace

TEST(NullServiceInterface, IsOneObjectPerType) {
    auto* const first = &NULLServiceInterface<LogSvcInterface>::Instance();
    EXPECT_EQ(first, &NULLServiceInterface<LogSvcInterface>::Instance());
    EXPECT_NE(static_cast<void*>(first), static_cast<void*>(&NULLServiceInterface<SecurityIF>::Instance()));
}

TEST(NullServiceInterface, StandsForNoService) {
    EXPECT_EQ(NULLServiceInterface<SecurityIF>::Instance().Get(), nullptr);
}

TEST(NullServiceInterface, IsCreatedUnderTheProcessWideLock) {
    struct OfThisTest {};
    std::unique_lock<std::recursive_mutex> lock(NS_BUNDLEMGR1::g_actualmutex);
    std::atomic<bool> done{false};
    std::thread other([&done] {
        NULLServiceInterface<OfThisTest>::Instance();
        done = true;
    });
    // The owner of the lock gets through, the other thread doesn't until the lock is free.
    NULLServiceInterface<OfThisTest>::Instance();
    EXPECT_FALSE(done);
    lock.unlock();
    other.join();
    EXPECT_TRUE(done);
}
