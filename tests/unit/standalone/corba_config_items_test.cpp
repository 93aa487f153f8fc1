#include "platform/corba_config_items.h"

#include <gtest/gtest.h>

#include "tests/support/config_items.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

using NS_BUNDLEMGR1::CorbaConfigItems;
using NS_BUNDLEMGR1::NameValueStru;
using qv_test::ScopedConfigItems;
using qv_test::ScopedEnv;
using qv_test::TempDir;

namespace {

CorbaConfigItems& Store() {
    return *CorbaConfigItems::Instance();
}

std::vector<NameValueStru> Items() {
    std::vector<NameValueStru> items = {{"left", "over"}};
    EXPECT_TRUE(Store().GetCorbaConfigItems(items));
    return items;
}

}  // namespace

TEST(CorbaConfigItems, DeliversTheFile) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG",
                        dir.Write("a.toml",
                                  "[agent]\nEmsName='A'\nORBThreadPoolEnable=true\n[platform]\n"
                                  "host_ip='192.0.2.7'\nlvs_mode=true\noss_addresses=['192.0.2.9','o']\n"));
    const auto items = Items();
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].name, "ORBThreadPoolEnable");
    EXPECT_EQ(items[0].value, "1");
    EXPECT_EQ(items[1].value, "A");
    std::string ip;
    EXPECT_TRUE(Store().GetHostIP(ip));
    EXPECT_EQ(ip, "192.0.2.7");
    EXPECT_TRUE(Store().GetLvsMode());
    std::vector<NameValueStru> addresses;
    EXPECT_TRUE(Store().GetIPAddressList(addresses));
    ASSERT_EQ(addresses.size(), 2U);
    EXPECT_EQ(addresses[0].value, "192.0.2.9");
    EXPECT_EQ(addresses[1].value, "o");
}

TEST(CorbaConfigItems, GetIntItemInfoWantsANumber) {
    ScopedConfigItems items({{"bLogOperation", "1"}, {"odd", "abc"}, {"empty", ""}, {"minus", "-7"}});
    int value = 99;
    EXPECT_FALSE(Store().GetIntItemInfo("absent", value));
    EXPECT_FALSE(Store().GetIntItemInfo("odd", value));
    EXPECT_FALSE(Store().GetIntItemInfo("empty", value));
    EXPECT_EQ(value, 99);
    EXPECT_TRUE(Store().GetIntItemInfo("bLogOperation", value));
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(Store().GetIntItemInfo("minus", value));
    EXPECT_EQ(value, -7);
    items.Set("bLogOperation", "0");
    EXPECT_TRUE(Store().GetIntItemInfo("bLogOperation", value));
    EXPECT_EQ(value, 0);
    items.Erase("bLogOperation");
    EXPECT_FALSE(Store().GetIntItemInfo("bLogOperation", value));
}

TEST(CorbaConfigItems, ItemsOfATestStandInForTheFile) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG", dir.Write("a.toml", "[agent]\nEmsName='from file'\n"));
    {
        ScopedConfigItems items({{"EmsName", "anything at all\n"}, {"no such key", "x"}}, "192.0.2.1", true);
        items.SetIPAddresses({"a", "b"});
        EXPECT_EQ(Items().size(), 2U);
        EXPECT_EQ(Items()[0].value, "anything at all\n");
        EXPECT_TRUE(Store().GetLvsMode());
        std::string ip;
        EXPECT_TRUE(Store().GetHostIP(ip));
        EXPECT_EQ(ip, "192.0.2.1");
        std::vector<NameValueStru> addresses;
        Store().GetIPAddressList(addresses);
        EXPECT_EQ(addresses.size(), 2U);
    }
    ASSERT_EQ(Items().size(), 1U);
    EXPECT_EQ(Items()[0].value, "from file");
    EXPECT_FALSE(Store().GetLvsMode());
}

TEST(CorbaConfigItems, TheAddressListFollowsTheFileAndSurvivesABadOne) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG",
                        dir.Write("a.toml", "[platform]\noss_addresses = ['192.0.2.1']\n"));
    const auto addresses = [] {
        std::vector<NS_BUNDLEMGR1::NameValueStru> list;
        EXPECT_TRUE(Store().GetIPAddressList(list));
        std::string text;
        for (const auto& entry : list) {
            text += entry.value + " ";
        }
        return text;
    };
    EXPECT_EQ(addresses(), "192.0.2.1 ");
    dir.Write("a.toml", "[platform]\noss_addresses = ['192.0.2.1', '192.0.2.22']\n");
    EXPECT_EQ(addresses(), "192.0.2.1 192.0.2.22 ");
    dir.Write("a.toml", "[platform\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(addresses(), "192.0.2.1 192.0.2.22 ");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("stays in force"), std::string::npos);
    testing::internal::CaptureStderr();
    EXPECT_EQ(addresses(), "192.0.2.1 192.0.2.22 ");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
