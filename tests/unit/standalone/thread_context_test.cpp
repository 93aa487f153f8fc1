#include "platform/thread_context.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include "standalone/thread_setup.h"

using NS_UTIL::ThreadContextInfo;
using NS_UTIL::ThreadContextMgr;

namespace {

ThreadContextInfo Mine() {
    return ThreadContextMgr::Instance()->GetThreadContext();
}

}  // namespace

TEST(ThreadContext, IsEmptyAtFirst) {
    EXPECT_EQ(Mine().GetUserInfo(), "");
    EXPECT_EQ(Mine().GetInterfaceName(), "");
    EXPECT_EQ(ThreadContextInfo().GetUserInfo(), "");
}

TEST(ThreadContext, HoldsWhatWasSetOnThisThreadOnly) {
    qv_standalone::SetThreadContext("[oss1][192.0.2.1:4000]", "getEMS");
    EXPECT_EQ(Mine().GetUserInfo(), "[oss1][192.0.2.1:4000]");
    EXPECT_EQ(Mine().GetInterfaceName(), "getEMS");
    std::string elsewhere = "not asked";
    std::thread([&elsewhere] { elsewhere = Mine().GetUserInfo(); }).join();
    EXPECT_EQ(elsewhere, "");
    qv_standalone::ClearThreadContext();
    EXPECT_EQ(Mine().GetUserInfo(), "");
}

TEST(ThreadContext, ACopyIsIndependent) {
    qv_standalone::SetThreadContext("[a][b]", "x");
    ThreadContextInfo copy = Mine();
    qv_standalone::ClearThreadContext();
    EXPECT_EQ(copy.GetUserInfo(), "[a][b]");
    ThreadContextInfo second;
    second = copy;
    copy = ThreadContextInfo();
    EXPECT_EQ(copy.GetUserInfo(), "");
    EXPECT_EQ(second.GetInterfaceName(), "x");
    ThreadContextInfo moved(std::move(second));
    EXPECT_EQ(moved.GetInterfaceName(), "x");
    ThreadContextInfo& self = moved;
    moved = self;
    EXPECT_EQ(moved.GetInterfaceName(), "x");
}
