#include <functional>

#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/interposed.h"

namespace qv_test {
namespace {

using NS_CORBA::CorbaBaseAgentConfig;

/// One key of the settings: what it holds without configuration, a value to give it, what it holds then.
struct KeyCase {
    const char* key;
    std::function<std::string()> read;
    std::string absent;
    std::string value;
    std::string expected;
};

std::string Text(const std::string& text) {
    return text;
}
template <typename Number>
std::string Text(Number number) {
    return std::to_string(number);
}

#define QV_ACCESSOR(accessor) [] { return Text(CorbaBaseAgentConfig::Instance()->accessor()); }
#define QV_MEMBER(member) [] { return Text(Probe::member()); }
#define QV_FLAG(index) [] { return Text(static_cast<int>(Probe::Flags()[index])); }

const std::vector<KeyCase>& AllKeys() {
    static const std::vector<KeyCase> keys{
        {"ORBThreadPoolEnable", QV_ACCESSOR(ORBThreadPool), "1", "0", "0"},
        {"ORBThreadNum", QV_ACCESSOR(GetORBThrdNum), "4", "7", "7"},
        {"TimerInterval", QV_ACCESSOR(TimeInterval), "30", "31", "31"},
        {"IteratorMaxNum", QV_ACCESSOR(IteratorNum), "50", "51", "51"},
        {"IteratorRestriction", QV_ACCESSOR(IteratorRestriction), "20", "21", "21"},
        {"TimeOut", QV_ACCESSOR(TimeOut), "60", "61", "61"},
        {"EventQueueLength", QV_ACCESSOR(EventQueueLength), "1000", "1001", "1001"},
        {"NamingService_Port", QV_MEMBER(NamingServicePort), "12001", "5001", "5001"},
        {"NamingService_SSLPort", QV_MEMBER(NamingServiceSSLPort), "22001", "5002", "5002"},
        {"NotifyService_Port", QV_MEMBER(NotifyServicePort), "12002", "5003", "5003"},
        {"NotifyService_SSLPort", QV_MEMBER(NotifyServiceSSLPort), "22002", "5004", "5004"},
        {"CORBAAgent_Port", QV_MEMBER(CorbaAgentPort), "12003", "5005", "5005"},
        {"CORBAAgent_SSLPort", QV_MEMBER(CorbaAgentSSLPort), "0", "5006", "5006"},
        {"NamingService_AutoStart", QV_MEMBER(NamingServiceAutoStart), "0", "1", "1"},
        {"NotifyService_AutoStart", QV_MEMBER(NotifyServiceAutoStart), "0", "1", "1"},
        {"SSLMode", QV_ACCESSOR(GetSSLMode), "0", "1", "1"},
        {"IDLVersion", QV_ACCESSOR(IDLVersion), "2.0", "3.5", "3.5"},
        {"EmsLocation", QV_MEMBER(EmsLocation), "local", "lab 4", "lab 4"},
        {"EmsName", QV_ACCESSOR(EmsName), "Zorvex/KLV", "Other/1", "Other/1"},
        {"EmsType", QV_MEMBER(EmsType), "Tarvo oFabric M4400", "another", "another"},
        {"NamingService_Name", QV_MEMBER(NamingServiceName), "Naming_Service", "ns", "ns"},
        {"NamingService_Host", QV_MEMBER(NamingServiceHost), NodeName(), "nh", "nh"},
        {"NamingService_Option", QV_MEMBER(NamingServiceOption), "-o ../ns.ior", "-x", "-x"},
        {"NotifyService_Name", QV_MEMBER(NotifyServiceName), "Notify_Service", "nt", "nt"},
        {"NotifyService_Host", QV_MEMBER(NotifyServiceHost), NodeName(), "th", "th"},
        {"NotifyService_Option", QV_MEMBER(NotifyServiceOption), "-ORBSvcConf ../notify.conf", "-y", "-y"},
        {"CORBAAgent_Host", QV_ACCESSOR(GetCorbaAgentAddress), NodeName(), "ah", "ah"},
        {"CORBAAgent_Option", QV_MEMBER(CorbaAgentOption),
         " -ORBCollocation no  -ORBPreferredInterfaces *=127.0.0.1",
         "-ORBCollocation global -ORBPreferredInterfaces *=10.0.0.1",
         "-ORBCollocation global -ORBPreferredInterfaces *=10.0.0.1"},
        {"bUseIPAndPort", QV_ACCESSOR(IsUseIPAndPort), "0", "1", "1"},
        {"PersistenceEventChannel", QV_ACCESSOR(PersistentEventChannel), "0", "1", "1"},
        {"AlarmTimeout", QV_ACCESSOR(AlarmTimeout), "1800", "1801", "1801"},
        {"HeartBeatTimeout", QV_ACCESSOR(HeartBeatTimeout), "30", "33", "33"},
        {"OtherEventTimeout", QV_ACCESSOR(OtherEventTimeout), "86400", "86401", "86401"},
        {"SSL_Profile", QV_MEMBER(SSLProfile), "", "ssl.conf", "ssl.conf"},
        {"NON_Profile", QV_ACCESSOR(GetNonSSLProfile), "", "non.conf", "non.conf"},
        {"IsInterceptorEnabled", QV_FLAG(0), "0", "1", "1"},
        {"ShakeHandWithOSS", QV_ACCESSOR(GetEmsPingMode), "1", "0", "0"},
        {"StrategyOfReleasingSession", QV_ACCESSOR(GetSessionReleaseStrategy), "1", "2", "2"},
        {"MaxSessionOfFIFO", QV_ACCESSOR(GetMaxSession), "10", "11", "11"},
        {"MaxIntervalOfSilentTime", QV_ACCESSOR(GetSilentTime), "3600", "3601", "3601"},
        {"TimeZoneRefPoint", QV_FLAG(2), "0", "3", "3"},
        {"TimeShowAppearance", QV_FLAG(1), "0", "2", "2"},
        {"bAlarmWithAffectObjName", QV_FLAG(3), "0", "4", "4"},
        {"bSingleThreadPushEvent", QV_MEMBER(SingleThreadPushEvent), "1", "0", "0"},
    };
    return keys;
}

class ConfigItems : public AgentTest {
  protected:
    std::string Got(const std::string& text) {
        return "[CorbaBaseAgentConfig::GetOptionByName] Get " + text + " failed!";
    }

    template <typename Value>
    Value Convert(const std::string& text, Value before) {
        config().GetOptionByName({{"key", text}}, "key", before);
        return before;
    }
};

TEST_F(ConfigItems, ThereAreFortyFourKeys) {
    EXPECT_EQ(44u, AllKeys().size());
}

TEST_F(ConfigItems, EmptyStoreKeepsEveryDefaultAndLogsEveryKeyInOrder) {
    EXPECT_TRUE(config().GetOption());
    std::vector<std::string> expected;
    for (const KeyCase& key : AllKeys()) {
        EXPECT_EQ(key.absent, key.read()) << key.key;
        expected.push_back(Got(key.key));
    }
    std::vector<std::string> failed;
    for (const LogEntry& entry : m_log->Entries(kDebug)) {
        if (entry.level == 2) {
            failed.push_back(entry.text);
        }
    }
    EXPECT_EQ(expected, failed);
    ExpectLog(kDebug, 2, "config_items", Got("ORBThreadPoolEnable"), "GetOptionByName] Get %s failed!");
    EXPECT_EQ(0, Probe::CorbaAgentSSLPort());
}

TEST_F(ConfigItems, EachKeyReachesItsMemberAndNoOther) {
    for (const KeyCase& key : AllKeys()) {
        CorbaBaseAgentConfig::Destroy();
        const ScopedConfigItems items({{key.key, key.value}});
        ASSERT_TRUE(config().GetOption());
        for (const KeyCase& other : AllKeys()) {
            if (other.key == key.key) {
                EXPECT_EQ(key.expected, other.read()) << key.key;
            } else if (std::string(other.key) != "CORBAAgent_Option") {  // depends on SSLMode too
                EXPECT_EQ(other.absent, other.read()) << other.key << " with only " << key.key << " set";
            }
        }
    }
}

TEST_F(ConfigItems, FlagsHaveTheirAccessors) {
    Probe::Flags() = {1, 2, 3, 4};
    EXPECT_TRUE(config().IsInterceptorEnabled());
    EXPECT_EQ(2, config().TimeShowAppearance());
    EXPECT_EQ(3, config().TimeZoneRefPoint());
    Probe::Flags() = {0, static_cast<char>(0x80), static_cast<char>(0xff), 0};
    EXPECT_FALSE(config().IsInterceptorEnabled());
    EXPECT_EQ(-128, config().TimeShowAppearance());
    EXPECT_EQ(-1, config().TimeZoneRefPoint());
    Probe::SingleThreadPushEvent() = -5;
    EXPECT_TRUE(config().IsSingleThreadPushEvent());
    Probe::SingleThreadPushEvent() = 0;
    EXPECT_FALSE(config().IsSingleThreadPushEvent());
}

TEST_F(ConfigItems, TypeAndAffectedObjectFlagAreStoredForNobody) {
    m_items.Set("EmsType", "Other type");
    m_items.Set("bAlarmWithAffectObjName", "9");
    config().GetOption();
    EXPECT_EQ("Other type", Probe::EmsType());
    EXPECT_EQ(9, Probe::Flags()[3]);
}

TEST_F(ConfigItems, LoopbackHostsBecomeTheNodeName) {
    m_items.Set("NamingService_Host", "localhost");
    m_items.Set("NotifyService_Host", "127.0.0.1");
    m_items.Set("CORBAAgent_Host", "127.0.0.1");
    config().GetOption();
    EXPECT_EQ(NodeName(), Probe::NamingServiceHost());
    EXPECT_EQ(NodeName(), Probe::NotifyServiceHost());
    EXPECT_EQ(NodeName(), config().GetCorbaAgentAddress());
    EXPECT_EQ(NodeName(), config().GetHostNameAndReturn());
}

TEST_F(ConfigItems, LoopbackNameInMixedCaseStays) {
    m_items.Set("CORBAAgent_Host", "LocalHost");
    config().GetOption();
    EXPECT_EQ("LocalHost", config().GetCorbaAgentAddress());
}

TEST_F(ConfigItems, IsLocalHostComparesExactly) {
    EXPECT_TRUE(config().IsLocalHost("localhost"));
    EXPECT_TRUE(config().IsLocalHost("127.0.0.1"));
    EXPECT_FALSE(config().IsLocalHost("LOCALHOST"));
    EXPECT_FALSE(config().IsLocalHost("127.0.0.11"));
    EXPECT_FALSE(config().IsLocalHost("localhos"));
    EXPECT_FALSE(config().IsLocalHost("::1"));
    EXPECT_FALSE(config().IsLocalHost(""));
}

TEST_F(ConfigItems, HostNameIsAskedForOnlyOnDemand) {
    EXPECT_EQ("localhost", config().GetHostNameAndReturn());
    config().GetHostName();
    EXPECT_EQ(NodeName(), config().GetHostNameAndReturn());
    Probe::HostName() = "kept";
    EXPECT_EQ("kept", config().GetHostNameAndReturn());
}

TEST_F(ConfigItems, LoopbackHostsStayWhileTheNodeNameIsUnknown) {
    const FailingNodeName failing;
    m_items.Set("CORBAAgent_Host", "127.0.0.1");
    config().GetOption();
    EXPECT_EQ("localhost", config().GetHostNameAndReturn());
    EXPECT_EQ("localhost", config().GetCorbaAgentAddress());
    Probe::HostName() = "kept";
    config().GetHostName();
    EXPECT_EQ("kept", config().GetHostNameAndReturn());
}

TEST_F(ConfigItems, ThreadPoolSwitchIsANumber) {
    m_items.Set("ORBThreadPoolEnable", "2");
    config().GetOption();
    EXPECT_TRUE(config().ORBThreadPool());
    m_items.Set("ORBThreadPoolEnable", "true");
    config().GetOption();
    EXPECT_FALSE(config().ORBThreadPool());
}

TEST_F(ConfigItems, OddSslModeIsStoredAsItIs) {
    m_items.Set("SSLMode", "7");
    config().GetOption();
    EXPECT_EQ(7u, config().GetSSLMode());
}

TEST_F(ConfigItems, AbsentSslModeReplacesTheMember) {
    Probe::SSLMode() = 5;
    config().GetOption();
    EXPECT_EQ(0u, config().GetSSLMode());
}

TEST_F(ConfigItems, BoolTakesTheLow32Bits) {
    EXPECT_TRUE(Convert<bool>("2", false));
    EXPECT_TRUE(Convert<bool>("-1", false));
    EXPECT_FALSE(Convert<bool>("0", true));
    EXPECT_FALSE(Convert<bool>("yes", true));
    EXPECT_FALSE(Convert<bool>("true", true));
    EXPECT_FALSE(Convert<bool>("", true));
    EXPECT_FALSE(Convert<bool>("4294967296", true));
    EXPECT_TRUE(Convert<bool>("4294967297", false));
}

TEST_F(ConfigItems, IntTakesTheLow32Bits) {
    EXPECT_EQ(-17, Convert<int>("-17", 1));
    EXPECT_EQ(12, Convert<int>(" 12x", 1));
    EXPECT_EQ(0, Convert<int>("abc", 1));
    EXPECT_EQ(0, Convert<int>("0x10", 1));
    EXPECT_EQ(-1, Convert<int>("4294967295", 1));
    EXPECT_EQ(5, Convert<int>("4294967301", 1));
    EXPECT_EQ(-1, Convert<int>("99999999999999999999", 1));  // the largest long, cut
    EXPECT_EQ(4294967295u, Convert<unsigned int>("-1", 1));
    EXPECT_EQ(0u, Convert<unsigned int>("abc", 1));
}

TEST_F(ConfigItems, UnsignedLongTakesAll64Bits) {
    EXPECT_EQ(18446744073709551615ul, Convert<unsigned long>("18446744073709551615", 1));
    EXPECT_EQ(18446744073709551615ul, Convert<unsigned long>("-1", 1));
    EXPECT_EQ(4294967296ul, Convert<unsigned long>("4294967296", 1));
    EXPECT_EQ(0ul, Convert<unsigned long>("abc", 1));
}

TEST_F(ConfigItems, UnsignedShortTakesTheLow16Bits) {
    EXPECT_EQ(4464, Convert<unsigned short>("70000", 1));
    EXPECT_EQ(0, Convert<unsigned short>("abc", 1));
    EXPECT_EQ(65535, Convert<unsigned short>("-1", 1));
    EXPECT_EQ(0, Convert<unsigned short>("65536", 1));
}

TEST_F(ConfigItems, CharTakesTheLow8Bits) {
    EXPECT_EQ(static_cast<char>(44), Convert<char>("300", 1));
    EXPECT_EQ(static_cast<char>(-1), Convert<char>("255", 1));
    EXPECT_EQ(0, Convert<char>("x", 1));
}

TEST_F(ConfigItems, StringIsTakenAsItIsEvenEmpty) {
    EXPECT_EQ(" a b ", Convert<std::string>(" a b ", "old"));
    EXPECT_EQ("", Convert<std::string>("", "old"));
}

template <typename Value>
class AbsentKey : public ConfigItems {};
using OptionTypes = ::testing::Types<bool, int, unsigned int, unsigned long, unsigned short, char>;
TYPED_TEST_SUITE(AbsentKey, OptionTypes);

TYPED_TEST(AbsentKey, LeavesTheValueAndLogs) {
    TypeParam value = 1;
    this->config().GetOptionByName({{"Key", "0"}}, "key", value);
    EXPECT_EQ(TypeParam(1), value);
    this->ExpectLog(kDebug, 2, "config_items", this->Got("key"), "GetOptionByName] Get %s failed!");
}

TEST_F(ConfigItems, AbsentStringLeavesTheValueAndLogs) {
    std::string value = "old";
    config().GetOptionByName({}, "key", value);
    EXPECT_EQ("old", value);
    ExpectLog(kDebug, 2, "config_items", Got("key"), "GetOptionByName] Get %s failed!");
}

TEST_F(ConfigItems, EmsVersionIsAlwaysEmpty) {
    m_items.Set("EmsVersion", "1.0");
    config().GetOption();
    EXPECT_EQ("", config().EmsVersion());
}

}  // namespace
}  // namespace qv_test
