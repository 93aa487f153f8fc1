#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

constexpr CORBA::ULongLong kSecond = 10000000;

class EventFilling : public SupplierTest {
  protected:
    EventFilling()
        : SupplierTest({{"AlarmTimeout", "11"}, {"HeartBeatTimeout", "22"}, {"OtherEventTimeout", "33"}}) {}

    CORBA::ULongLong TimeoutOfType(const char* type) {
        StructuredEvent event = MakeEvent(type);
        std::string id;
        EXPECT_EQ(0, manager->FillEvent(event, id));
        return TimeoutOf(event);
    }

    void SetTimeouts(const char* seconds) {
        for (const char* key : {"AlarmTimeout", "HeartBeatTimeout", "OtherEventTimeout"}) {
            m_items.Set(key, seconds);
        }
        config().GetOption();
    }
};

TEST_F(EventFilling, PutsANewIdIntoTheFirstFilterableValueOnly) {
    StructuredEvent event = MakeEvent("NT_TCA", "", 3);
    std::string id = "before";
    EXPECT_EQ(0, manager->FillEvent(event, id));
    EXPECT_GT(id.size(), 10u);
    EXPECT_EQ(id, FilterableText(event, 0));
    EXPECT_STREQ("name 0", event.filterable_data[0].name.in());
    EXPECT_EQ("value 1", FilterableText(event, 1));
    EXPECT_EQ("value 2", FilterableText(event, 2));
}

TEST_F(EventFilling, EachKindOfEventHasItsTimeout) {
    for (const char* type : {"NT_TCA", "NT_ALARM", "NT_ALARM_UPDATED"}) {
        EXPECT_EQ(11 * kSecond, TimeoutOfType(type)) << type;
    }
    EXPECT_EQ(22 * kSecond, TimeoutOfType("NT_HEARTBEAT"));
    for (const char* type : {"NT_ALARM_ACKNOWLEDGE", "NT_STATE_CHANGE", "NT_LOGIN", "NT_HEARTBEATS", ""}) {
        EXPECT_EQ(33 * kSecond, TimeoutOfType(type)) << type;
    }
}

TEST_F(EventFilling, ATimeoutMayBeZeroOrWide) {
    SetTimeouts("0");
    EXPECT_EQ(0u, TimeoutOfType("NT_ALARM"));
    SetTimeouts("1000000000");
    EXPECT_EQ(1000000000 * kSecond, TimeoutOfType("NT_ALARM"));
}

TEST_F(EventFilling, TheVariableHeaderIsCutToTheTimeout) {
    StructuredEvent event = MakeEvent("NT_TCA");
    CosNotification::PropertySeq& header = event.header.variable_header;
    header.length(3);
    header[0].name = CORBA::string_dup("Priority");
    header[0].value <<= "old";
    header[1].name = CORBA::string_dup("StartTime");
    std::string id;
    manager->FillEvent(event, id);
    EXPECT_EQ(11 * kSecond, TimeoutOf(event));
}

TEST_F(EventFilling, TheBundleWithIdsOfItsOwnKeepsThemInAlarmsOnly) {
    config().SetCorbaBundleName("qv_xden_corbaagent_bundle");
    StructuredEvent alarm = MakeEvent("NT_ALARM");
    std::string id = "";
    EXPECT_EQ(0, manager->FillEvent(alarm, id));
    EXPECT_EQ("", id);
    EXPECT_EQ("value 0", FilterableText(alarm));
    EXPECT_EQ(11 * kSecond, TimeoutOf(alarm));

    StructuredEvent other = MakeEvent("NT_ALARM_UPDATED");
    manager->FillEvent(other, id);
    EXPECT_NE("", id);
    EXPECT_EQ(id, FilterableText(other));
}

TEST_F(EventFilling, AnotherBundlesAlarmsGetIds) {
    config().SetCorbaBundleName("qv_xden_corbaagent_bundle2");
    StructuredEvent alarm = MakeEvent("NT_ALARM");
    std::string id;
    manager->FillEvent(alarm, id);
    EXPECT_NE("", id);
    EXPECT_EQ(id, FilterableText(alarm));
}

TEST_F(EventFilling, AnEventWithoutFilterableDataIsRefused) {
    StructuredEvent event = MakeEvent("NT_TCA", "", 0);
    std::string id;
    EXPECT_THROW(manager->FillEvent(event, id), CORBA::BAD_PARAM);
}

TEST_F(EventFilling, AnAlarmWithItsOwnIdNeedsNoFilterableData) {
    config().SetCorbaBundleName("qv_xden_corbaagent_bundle");
    StructuredEvent alarm = MakeEvent("NT_ALARM", "", 0);
    std::string id;
    EXPECT_EQ(0, manager->FillEvent(alarm, id));
    EXPECT_EQ(11 * kSecond, TimeoutOf(alarm));
}

TEST_F(EventFilling, TheFixedHeaderSaysDomainAndType) {
    StructuredEvent event;
    event.header.fixed_header.event_name = CORBA::string_dup("old");
    NS_CORBA::fillFixedHeader("NT_TCA", event);
    EXPECT_STREQ("tmf_mtnm", event.header.fixed_header.event_type.domain_name.in());
    EXPECT_STREQ("NT_TCA", event.header.fixed_header.event_type.type_name.in());
    EXPECT_STREQ("", event.header.fixed_header.event_name.in());
}

TEST_F(EventFilling, FormatLogAppendsNameAndValue) {
    std::stringstream out;
    out << "x" << std::hex;
    SuppilerMgr::FormatLog("objectName", std::string("a b"), out);
    SuppilerMgr::FormatLog("severity", -31, out);
    SuppilerMgr::FormatLog("", std::string(), out);
    EXPECT_EQ("x{name objectName value a b}{name severity value -31}{name  value }", out.str());
}

}  // namespace
}  // namespace qv_test
