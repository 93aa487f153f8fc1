#include "platform/huge_task_mgr.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/thread_context.h"
#include "standalone/thread_setup.h"

using NS_UTIL::HugeTaskMgr;
using NS_UTIL::ThreadContextInfo;
using NS_UTIL::ThreadContextMgr;

namespace {

HugeTaskMgr& Manager() {
    return *HugeTaskMgr::Instance();
}
ThreadContextInfo Mine() {
    return ThreadContextMgr::Instance()->GetThreadContext();
}

}  // namespace

TEST(HugeTaskMgr, AThreadWithoutATaskRunsNoHugeOne) {
    qv_standalone::ClearThreadContext();
    EXPECT_FALSE(Manager().IsSynHTsk());
    qv_standalone::RegisterSynHugeTask(Mine());
    EXPECT_FALSE(Manager().IsSynHTsk());
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 0U);
    Manager().RemoveHTskInfo(Mine());
}

TEST(HugeTaskMgr, AnswersForTheCallingThreadAndForgets) {
    qv_standalone::SetThreadContext("[a][b]", "x");
    EXPECT_FALSE(Manager().IsSynHTsk());
    qv_standalone::RegisterSynHugeTask(Mine());
    EXPECT_TRUE(Manager().IsSynHTsk());
    bool elsewhere = true;
    std::thread([&elsewhere] {
        qv_standalone::SetThreadContext("[a][b]", "x");
        elsewhere = Manager().IsSynHTsk();
    }).join();
    EXPECT_FALSE(elsewhere);
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 1U);
    Manager().RemoveHTskInfo(Mine());
    EXPECT_FALSE(Manager().IsSynHTsk());
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 0U);
    qv_standalone::ClearThreadContext();
}

TEST(HugeTaskMgr, TheNextTaskOfAThreadIsAnotherOne) {
    qv_standalone::SetThreadContext("[a][b]", "x");
    const ThreadContextInfo first = Mine();
    qv_standalone::RegisterSynHugeTask(first);
    qv_standalone::SetThreadContext("[a][b]", "x");
    EXPECT_FALSE(Manager().IsSynHTsk());
    Manager().RemoveHTskInfo(Mine());
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 1U);
    Manager().RemoveHTskInfo(first);
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 0U);
    qv_standalone::ClearThreadContext();
}
