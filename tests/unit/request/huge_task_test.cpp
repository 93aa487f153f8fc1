// The end of a request on a thread with and without a huge task. This program's own huge task manager and
// thread contexts take the place of those in the platform's library, so that every call to them shows.

#include "platform/huge_task_mgr.h"
#include "platform/thread_context.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

struct Platform {
    bool hugeTask = false;
    bool removalFails = false;
    int asked = 0;
    int contexts = 0;
    int removed = 0;
};
Platform g_platform;

}  // namespace

namespace NS_UTIL {

HugeTaskMgr::HugeTaskMgr() = default;
HugeTaskMgr::~HugeTaskMgr() = default;

HugeTaskMgr* HugeTaskMgr::Instance() {
    static auto* const instance = new HugeTaskMgr;
    return instance;
}

bool HugeTaskMgr::IsSynHTsk() {
    ++g_platform.asked;
    return g_platform.hugeTask;
}

void HugeTaskMgr::RemoveHTskInfo(const ThreadContextInfo&) {
    if (g_platform.removalFails) {
        throw CORBA::INTERNAL();
    }
    ++g_platform.removed;
}

ThreadContextMgr::ThreadContextMgr() = default;
ThreadContextMgr::~ThreadContextMgr() = default;

ThreadContextMgr* ThreadContextMgr::Instance() {
    static auto* const instance = new ThreadContextMgr;
    return instance;
}

ThreadContextInfo ThreadContextMgr::GetThreadContext() {
    ++g_platform.contexts;
    return {};
}

}  // namespace NS_UTIL

namespace {

class HugeTaskTest : public qv_test::InterceptorFixture {
  protected:
    HugeTaskTest() { g_platform = Platform{}; }

    qv_test::OwnInterceptor interceptor;
};

TEST_F(HugeTaskTest, WithoutAHugeTaskTheThreadsContextIsNotAsked) {
    interceptor->send_reply(&info);
    interceptor->send_exception(&info);
    interceptor->send_other(&info);
    EXPECT_EQ(g_platform.asked, 3);
    EXPECT_EQ(g_platform.contexts, 0);
    EXPECT_EQ(g_platform.removed, 0);
}

TEST_F(HugeTaskTest, EveryEndOfARequestRemovesItsHugeTask) {
    g_platform.hugeTask = true;
    interceptor->send_reply(&info);
    EXPECT_EQ(g_platform.removed, 1);
    interceptor->send_exception(&info);
    EXPECT_EQ(g_platform.removed, 2);
    interceptor->send_other(&info);
    EXPECT_EQ(g_platform.removed, 3);
    EXPECT_EQ(g_platform.contexts, 3);
}

TEST_F(HugeTaskTest, AnotherEndRemovesTheHugeTaskAndWritesNoRecord) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    g_platform.hugeTask = true;
    interceptor->send_other(&info);
    EXPECT_EQ(g_platform.removed, 1);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(HugeTaskTest, AFailedRemovalGoesToTheOrbAndNoRecordIsWritten) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    g_platform.hugeTask = true;
    g_platform.removalFails = true;
    EXPECT_THROW(interceptor->send_reply(&info), CORBA::INTERNAL);
    EXPECT_THROW(interceptor->send_exception(&info), CORBA::INTERNAL);
    EXPECT_THROW(interceptor->send_other(&info), CORBA::INTERNAL);
    EXPECT_TRUE(capture->Entries().empty());
}

}  // namespace
