#include "standalone/settings_table.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

using qv_standalone::AllSettings;
using qv_standalone::FindSetting;
using qv_standalone::Setting;
using qv_standalone::ValueType;

namespace {

// Every key of the agent with the value that the library falls back on.
const std::vector<std::pair<std::string, std::string>> kAgentDefaults = {
    {"ORBThreadPoolEnable", "1"},
    {"ORBThreadNum", "4"},
    {"TimerInterval", "30"},
    {"IteratorMaxNum", "50"},
    {"IteratorRestriction", "20"},
    {"TimeOut", "60"},
    {"EventQueueLength", "1000"},
    {"NamingService_Port", "12001"},
    {"NamingService_SSLPort", "22001"},
    {"NotifyService_Port", "12002"},
    {"NotifyService_SSLPort", "22002"},
    {"CORBAAgent_Port", "12003"},
    {"CORBAAgent_SSLPort", "0"},
    {"NamingService_AutoStart", "0"},
    {"NotifyService_AutoStart", "0"},
    {"SSLMode", "0"},
    {"IDLVersion", "2.0"},
    {"EmsLocation", "local"},
    {"EmsName", "Zorvex/KLV"},
    {"EmsType", "Tarvo oFabric M4400"},
    {"NamingService_Name", "Naming_Service"},
    {"NamingService_Host", "localhost"},
    {"NamingService_Option", "-o ../ns.ior"},
    {"NotifyService_Name", "Notify_Service"},
    {"NotifyService_Host", "localhost"},
    {"NotifyService_Option", "-ORBSvcConf ../notify.conf"},
    {"CORBAAgent_Host", "localhost"},
    {"CORBAAgent_Option", ""},
    {"bUseIPAndPort", "0"},
    {"PersistenceEventChannel", "0"},
    {"AlarmTimeout", "1800"},
    {"HeartBeatTimeout", "30"},
    {"OtherEventTimeout", "86400"},
    {"SSL_Profile", ""},
    {"NON_Profile", ""},
    {"IsInterceptorEnabled", "0"},
    {"ShakeHandWithOSS", "1"},
    {"StrategyOfReleasingSession", "1"},
    {"MaxSessionOfFIFO", "10"},
    {"MaxIntervalOfSilentTime", "3600"},
    {"TimeZoneRefPoint", "0"},
    {"TimeShowAppearance", "0"},
    {"bAlarmWithAffectObjName", "0"},
    {"bSingleThreadPushEvent", "1"},
    {"bLogOperation", "0"},
    {"bLogNotify", "0"},
    {"bLogAlaram", "0"},
};

}  // namespace

TEST(SettingsTable, HoldsEveryKeyOfTheAgentInOrderWithItsDefault) {
    std::vector<std::pair<std::string, std::string>> found;
    for (const Setting& setting : AllSettings()) {
        if (std::string(setting.table) == "agent") {
            found.emplace_back(setting.key, setting.initial);
        }
    }
    EXPECT_EQ(found, kAgentDefaults);
}

TEST(SettingsTable, DescribesEachSettingCompletely) {
    std::set<std::string> keys;
    for (const Setting& setting : AllSettings()) {
        SCOPED_TRACE(setting.key);
        EXPECT_TRUE(keys.insert(setting.key).second) << "stands twice";
        EXPECT_STRNE(setting.meaning, "");
        EXPECT_STRNE(setting.group, "");
        EXPECT_STRNE(setting.example, "");
        EXPECT_TRUE(std::string(setting.table) == "agent" || std::string(setting.table) == "platform");
        if (setting.type == ValueType::kInteger) {
            const long long initial = std::stoll(setting.initial);
            EXPECT_LE(setting.min, initial);
            EXPECT_GE(setting.max, initial);
        }
    }
}

TEST(SettingsTable, FindsASettingInItsOwnTableOnly) {
    ASSERT_NE(FindSetting("agent", "SSLMode"), nullptr);
    EXPECT_STREQ(FindSetting("agent", "SSLMode")->key, "SSLMode");
    EXPECT_EQ(FindSetting("platform", "SSLMode"), nullptr);
    EXPECT_EQ(FindSetting("agent", "sslmode"), nullptr);
    EXPECT_NE(FindSetting("platform", "log_dir"), nullptr);
}

TEST(SettingsTable, ShowsDefaultsAsTheFileHasThem) {
    EXPECT_EQ(InitialAsToml(*FindSetting("agent", "ORBThreadPoolEnable")), "true");
    EXPECT_EQ(InitialAsToml(*FindSetting("agent", "bLogNotify")), "false");
    EXPECT_EQ(InitialAsToml(*FindSetting("agent", "CORBAAgent_Port")), "12003");
    EXPECT_EQ(InitialAsToml(*FindSetting("agent", "EmsName")), "\"Zorvex/KLV\"");
    EXPECT_EQ(InitialAsToml(*FindSetting("platform", "oss_addresses")), "[]");
}

TEST(SettingsTable, ShowsTheRangeOfNumbersOnly) {
    EXPECT_EQ(RangeText(*FindSetting("agent", "NotifyService_SSLPort")), "0 to 65535");
    EXPECT_EQ(RangeText(*FindSetting("agent", "EmsName")), "");
}
