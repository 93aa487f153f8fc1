#include "platform/self_util_common.h"

#include <gtest/gtest.h>

#include "tests/support/scoped_env.h"

using NS_UTIL::SelfUtilCommon;
using qv_test::ScopedEnv;

TEST(SelfUtilCommon, ReadsTheEnvironment) {
    const ScopedEnv set("_APP_SHARE_DIR", "/opt/share");
    EXPECT_EQ(SelfUtilCommon::getEnvValue("_APP_SHARE_DIR"), "/opt/share");
    const ScopedEnv unset("_APP_SHARE_DIR", std::nullopt);
    EXPECT_EQ(SelfUtilCommon::getEnvValue("_APP_SHARE_DIR"), "");
}

TEST(SelfUtilCommon, TakesTheTextBetweenTags) {
    auto& util = *SelfUtilCommon::Instance();
    const std::string name = "<USERNAME_TAG>oss1</USERNAME_TAG><IPANDPORT_TAG>192.0.2.1:80</IPANDPORT_TAG>";
    EXPECT_EQ(util.GetValByTag(name, "<USERNAME_TAG>", "</USERNAME_TAG>", 14), "oss1");
    EXPECT_EQ(util.GetValByTag(name, "<IPANDPORT_TAG>", "</IPANDPORT_TAG>", 15), "192.0.2.1:80");
    EXPECT_EQ(util.GetValByTag("<a></a>", "<a>", "</a>", 3), "");
}

TEST(SelfUtilCommon, WithoutBothTagsThereIsNothing) {
    auto& util = *SelfUtilCommon::Instance();
    EXPECT_EQ(util.GetValByTag("", "<a>", "</a>", 3), "");
    EXPECT_EQ(util.GetValByTag("<a>x", "<a>", "</a>", 3), "");
    EXPECT_EQ(util.GetValByTag("x</a>", "<a>", "</a>", 3), "");
    EXPECT_EQ(util.GetValByTag("</a><a>x", "<a>", "</a>", 3), "");
    EXPECT_EQ(util.GetValByTag("<a>x</a>", "<a>", "</a>", 1000), "");
    EXPECT_EQ(util.GetValByTag("<a>x</a>", "<a>", "</a>", -1), "");
}
