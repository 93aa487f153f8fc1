#include <gtest/gtest.h>

#include <type_traits>

#include "platform/corba_config_items.h"
#include "platform/huge_task_mgr.h"
#include "platform/self_util_common.h"
#include "platform/thread_context.h"

// What another implementation of the shared libraries relies on: no data in the singletons, one pointer in
// the value.
TEST(PlatformHeaders, SingletonsHaveNoDataOfTheirOwn) {
    EXPECT_TRUE(std::is_empty_v<NS_BUNDLEMGR1::CorbaConfigItems>);
    EXPECT_TRUE(std::is_empty_v<NS_UTIL::SelfUtilCommon>);
    EXPECT_TRUE(std::is_empty_v<NS_UTIL::ThreadContextMgr>);
    EXPECT_TRUE(std::is_empty_v<NS_UTIL::HugeTaskMgr>);
}

TEST(PlatformHeaders, AThreadContextIsOnePointer) {
    EXPECT_EQ(sizeof(NS_UTIL::ThreadContextInfo), sizeof(void*));
    EXPECT_FALSE(std::is_polymorphic_v<NS_UTIL::ThreadContextInfo>);
    EXPECT_TRUE(std::is_copy_constructible_v<NS_UTIL::ThreadContextInfo>);
}
