#include <orbsvcs/CosNotificationC.h>
#include <tao/DynamicAny/DynAnyFactory.h>

#include <stdexcept>
#include <thread>

#include "logging/log_records.h"
#include "logging/record_stamp.h"
#include "orb/portability.h"
#include "tests/unit/logging/golden_values.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/logging/orb_environment.h"
#include "valuesC.h"

// Records of events, and any value as a debug text. The texts were made by hand from the rules.

namespace {

using namespace NS_CORBA;
using CosNotification::StructuredEvent;

constexpr char kNotFull[] = "...this record is not full!";
constexpr char kEventError[] = "---ERROR: Exception occurred when parsing notification event!";

template <class Value>
void AddField(StructuredEvent& event, const char* name, const Value& value) {
    const CORBA::ULong last = event.filterable_data.length();
    event.filterable_data.length(last + 1);
    event.filterable_data[last].name = CORBA::string_dup(name);
    event.filterable_data[last].value <<= value;
}

StructuredEvent EventOf(const char* type, const char* id = nullptr) {
    StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup("tmf_mtnm");
    event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
    if (id) {
        AddField(event, "id", id);
    }
    return event;
}

/// A value that can't be printed: a union of which no member is active.
Values::Maybe Unprintable() {
    Values::Maybe value;
    value._default();
    return value;
}

class NotifyLogRecord : public qv_test::LogFixture {
  protected:
    NotifyLogRecord() { qv_test::TestOrb(); }
    void SetUp() override { ASSERT_TRUE(InitLog({{"bLogNotify", "1"}})); }

    /// The text of the record that `event` leaves.
    std::string Record(const StructuredEvent& event) {
        capture->Clear();
        SetPos("source", 12);
        TaWriteNotifyLog(event);
        const auto records = capture->Entries("corbanotify");
        EXPECT_EQ(records.size(), 1u);
        return records.empty() ? "" : records[0].text;
    }
    static std::string Head(const std::string& id, const std::string& type) {
        return "--- NotificationID:  " + id + ", EventType:  " + type + "\n---";
    }
};

TEST_F(NotifyLogRecord, HasIdTypeAndFieldsAtNoLevelFromTheCallersPosition) {
    StructuredEvent event = EventOf("NT_ALARM", "5");
    AddField(event, "count", CORBA::Long(-7));
    const std::string text = Record(event);
    ASSERT_EQ(capture->Entries().size(), 1u);
    qv_test::ExpectEntry(capture->Entries()[0], "corbanotify", -1, "source", 12,
                         Head("5", "NT_ALARM") + "EventInfo: {{name id value 5} {name count value -7}}\n");
    EXPECT_EQ(text, capture->Entries()[0].text);
}

TEST_F(NotifyLogRecord, AnEventWithoutFieldsHasAnEmptyId) {
    EXPECT_EQ(Record(EventOf("NT_ALARM")), Head("", "NT_ALARM") + "EventInfo: {}\n");
}

TEST_F(NotifyLogRecord, ThreeTypesShowTheRemainderBehindTheFields) {
    for (const char* type : {"NT_OBJECT_CREATION", "NT_OBJECT_DELETION", "NT_STATE_CHANGE"}) {
        StructuredEvent event = EventOf(type, "5");
        event.remainder_of_body <<= qv_test::Point(3, "port");
        EXPECT_EQ(
            Record(event),
            Head("5", type) + "EventInfo: {{name id value 5}}------remainder_of_body: {x 3 label port}\n");
    }
}

TEST_F(NotifyLogRecord, AnEmptyRemainderPrintsAsNull) {
    EXPECT_EQ(Record(EventOf("NT_OBJECT_CREATION")),
              Head("", "NT_OBJECT_CREATION") + "EventInfo: {}------remainder_of_body: null\n");
}

TEST_F(NotifyLogRecord, OtherTypesKeepTheirRemainderToThemselves) {
    for (const char* type :
         {"NT_ATTRIBUTE_VALUE_CHANGE", "NT_ALARM", "NT_OBJECT_CREATIO", "nt_object_creation", ""}) {
        StructuredEvent event = EventOf(type, "5");
        event.remainder_of_body <<= "hidden";
        EXPECT_EQ(Record(event), Head("5", type) + "EventInfo: {{name id value 5}}\n");
    }
}

TEST_F(NotifyLogRecord, AnIdThatIsNoStringEndsTheRecord) {
    StructuredEvent event = EventOf("NT_OBJECT_CREATION");
    AddField(event, "id", CORBA::Long(5));
    EXPECT_EQ(Record(event), Head("", "NT_OBJECT_CREATION") + kEventError + kNotFull);
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    qv_test::ExpectEntry(
        debug[0], "corbadebug", 3, "logmgr", 1250,
        "[CorbaLogMgr::GetNotifyLogRecord] CORBA exception  received when parsing notification event!");
}

TEST_F(NotifyLogRecord, AnIdWithoutAValueEndsTheRecordToo) {
    StructuredEvent event = EventOf("NT_ALARM");
    event.filterable_data.length(1);
    EXPECT_EQ(Record(event), Head("", "NT_ALARM") + kEventError + kNotFull);
}

TEST_F(NotifyLogRecord, AnUnprintableRemainderIsTold) {
    StructuredEvent event = EventOf("NT_STATE_CHANGE", "5");
    event.remainder_of_body <<= Unprintable();
    EXPECT_EQ(Record(event), Head("5", "NT_STATE_CHANGE") +
                                 "EventInfo: {{name id value 5}}------remainder_of_body: \n" + kNotFull);
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    EXPECT_EQ(debug[0].line, 1054);
}

TEST_F(NotifyLogRecord, AnUnprintableFieldIsTold) {
    StructuredEvent event = EventOf("NT_ALARM", "5");
    AddField(event, "bad", Unprintable());
    EXPECT_EQ(Record(event),
              Head("5", "NT_ALARM") + "EventInfo: {{name id value 5} {name bad value \n" + kNotFull);
}

TEST_F(NotifyLogRecord, AGoodRemainderMakesUpForAnUnprintableField) {
    StructuredEvent event = EventOf("NT_OBJECT_CREATION", "5");
    AddField(event, "bad", Unprintable());
    event.remainder_of_body <<= "good";
    EXPECT_EQ(Record(event),
              Head("5", "NT_OBJECT_CREATION") +
                  "EventInfo: {{name id value 5} {name bad value ------remainder_of_body: good\n");
}

// What raises while a record is made: the debug channel, here when it is told of the unprintable field.
TEST_F(NotifyLogRecord, ACorbaExceptionEndsTheRecord) {
    StructuredEvent event = EventOf("NT_ALARM", "5");
    AddField(event, "bad", Unprintable());
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.text.find("[CorbaLogMgr::ParseAnyData]") == 0) {
            throw CORBA::NO_RESOURCES(7, CORBA::COMPLETED_NO);
        }
    });
    EXPECT_EQ(Record(event), Head("5", "NT_ALARM") + kEventError + kNotFull);
    const auto debug = capture->Entries("corbadebug");
    ASSERT_FALSE(debug.empty());
    qv_test::ExpectEntry(
        debug.back(), "corbadebug", 3, "logmgr", 1246,
        "[CorbaLogMgr::GetNotifyLogRecord] CORBA exception <" +
            std::string(qv_orb::ExceptionText(CORBA::NO_RESOURCES(7, CORBA::COMPLETED_NO)).c_str()) +
            "> received when parsing notification event!");
}

TEST_F(NotifyLogRecord, WhatAnExceptionFindsPrintedStays) {
    StructuredEvent event = EventOf("NT_STATE_CHANGE", "5");
    event.remainder_of_body <<= Unprintable();
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.text.find("[CorbaLogMgr::ParseAnyData]") == 0) {
            throw std::runtime_error("disk full");
        }
    });
    EXPECT_EQ(Record(event),
              Head("5", "NT_STATE_CHANGE") + "EventInfo: {{name id value 5}}" + kEventError + kNotFull);
}

TEST_F(NotifyLogRecord, EndsAtAnOctetOfZero) {
    StructuredEvent event = EventOf("NT_ALARM", "5");
    AddField(event, "raw", qv_test::Octets(std::string("a\0b", 3)));
    EXPECT_EQ(Record(event), Head("5", "NT_ALARM") + "EventInfo: {{name id value 5} {name raw value {a ");
}

TEST_F(NotifyLogRecord, FieldsAreStampedAndKept) {
    TANotifyRecord record;
    record.eventInfo = "before ";
    const ACE_Time_Value before = RecordTime();
    EXPECT_EQ(Manager().GetNotifyLogRecord(EventOf("NT_TCA", "5"), record), 0);
    EXPECT_GE(record.time, before);
    EXPECT_LE(record.time, RecordTime());
    EXPECT_EQ(record.threadId, RecordThreadId());
    EXPECT_EQ(record.notificationId, "5");
    EXPECT_EQ(record.eventType, "NT_TCA");
    EXPECT_EQ(record.eventInfo, "before EventInfo: {{name id value 5}}\n");
}

TEST_F(NotifyLogRecord, InfoComesWithItsStatus) {
    using Info = std::pair<std::string, int>;
    EXPECT_EQ(Manager().GetInfoFromEvent(EventOf("NT_TCA", "5")), Info("{{name id value 5}}", 0));
    StructuredEvent event = EventOf("NT_TCA");
    AddField(event, "bad", Unprintable());
    EXPECT_EQ(Manager().GetInfoFromEvent(event), Info("{{name bad value ", -1));
}

TEST_F(NotifyLogRecord, ThreadsWriteWholeRecords) {
    capture->Clear();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int n = 0; n < 50; ++n) {
                TaWriteNotifyLog(EventOf("NT_ALARM", std::to_string(i).c_str()));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::map<std::string, int> counts;
    for (const auto& entry : capture->Entries("corbanotify")) {
        ++counts[entry.text];
    }
    EXPECT_EQ(counts.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        const std::string id = std::to_string(i);
        EXPECT_EQ(counts[Head(id, "NT_ALARM") + "EventInfo: {{name id value " + id + "}}\n"], 50);
    }
}

TEST(NotifyLogSwitch, WhenItIsOffAnEventLeavesNothing) {
    qv_test::TestOrb();
    qv_test::ScopedLogCapture capture;
    const qv_test::ScopedConfigItems config(
        {{"bLogNotify", "0"}, {"bLogAlaram", "1"}, {"bLogOperation", "1"}});
    ASSERT_TRUE(CorbaLogMgr::Instance()->Init());
    StructuredEvent event = EventOf("NT_ALARM");
    AddField(event, "id", CORBA::Long(5));  // would be told in the debug channel
    TaWriteNotifyLog(event);
    EXPECT_TRUE(capture->Entries().empty());
    CorbaLogMgr::Destroy();
}

TEST(NotifyLogSwitch, WithoutInitAnEventLeavesNothing) {
    qv_test::TestOrb();
    const qv_test::ScopedLogCapture capture;
    TaWriteNotifyLog(EventOf("NT_ALARM", "5"));
    TaWriteTmfLog(1, CORBA::Any());
    CorbaLogMgr::Destroy();
}

/// Every kind of value prints in a record as a DynAny of the whole would print.
class GoldenEvent : public NotifyLogRecord, public ::testing::WithParamInterface<qv_test::GoldenText> {
  protected:
    std::string ThroughDynAny(const CORBA::Any& value) {
        std::ostringstream out;
        const DynamicAny::DynAny_var dynamic = TAO_DynAnyFactory().create_dyn_any(value);
        EXPECT_EQ(Manager().ParseAnyData(dynamic.in(), out), 0);
        dynamic->destroy();
        return out.str();
    }
};

TEST_P(GoldenEvent, PrintsAsADynAnyWould) {
    StructuredEvent event = EventOf("NT_OBJECT_CREATION", "5");
    event.filterable_data.length(2);
    GetParam().fill(event.filterable_data[1].value);
    GetParam().fill(event.remainder_of_body);
    CORBA::Any fields;
    fields <<= event.filterable_data;
    CORBA::Any wrapped;
    wrapped <<= event.remainder_of_body;
    TANotifyRecord record;
    EXPECT_EQ(Manager().GetNotifyLogRecord(event, record), 0);
    EXPECT_EQ(record.eventInfo, "EventInfo: " + ThroughDynAny(fields) +
                                    "------remainder_of_body: " + ThroughDynAny(wrapped) + "\n");
    EXPECT_EQ(ThroughDynAny(wrapped), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Kinds, GoldenEvent, ::testing::ValuesIn(qv_test::GoldenTexts()),
                         [](const auto& golden) { return std::string(golden.param.name); });

class TmfLog : public NotifyLogRecord {
  protected:
    qv_test::LogEntry Written(int level, const CORBA::Any& value) {
        capture->Clear();
        SetPos("source", 12);
        TaWriteTmfLog(level, value);
        const auto entries = capture->Entries("corbadebug");
        return entries.empty() ? qv_test::LogEntry() : entries.back();
    }
};

TEST_F(TmfLog, WritesAnyValueAtTheGivenLevelFromTheCallersPosition) {
    CORBA::Any value;
    value <<= qv_test::Point(3, "port");
    qv_test::ExpectEntry(Written(2, value), "corbadebug", 2, "source", 12, "{x 3 label port}\n");
    EXPECT_EQ(capture->Entries().size(), 1u);
}

TEST_F(TmfLog, WritesWhatCouldBePrinted) {
    StructuredEvent event = EventOf("NT_ALARM", "5");
    AddField(event, "bad", Unprintable());
    CORBA::Any value;
    value <<= event.filterable_data;
    const qv_test::LogEntry entry = Written(0, value);
    EXPECT_EQ(entry.text, "{{name id value 5} {name bad value \n");
    EXPECT_EQ(entry.level, 0);
    EXPECT_EQ(capture->Entries("corbadebug").size(), 2u);
}

TEST_F(TmfLog, TellsOfAValueThatNoDynAnyCanHold) {
    const CORBA::TypeCode_var type =
        qv_test::TestOrb()->create_value_box_tc("IDL:A:1.0", "A", CORBA::_tc_long);
    CORBA::Any value;
    value.replace(type.in(), nullptr);
    EXPECT_EQ(Written(1, value).text, "---ERROR: Exception occurred when parsing data !\n");
    EXPECT_EQ(Written(1, value).level, 1);
}

TEST_F(TmfLog, TellsOfAnExceptionBehindWhatWasPrinted) {
    CORBA::Any value;
    value <<= Unprintable();
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.text.find("[CorbaLogMgr::ParseAnyData]") == 0) {
            throw std::runtime_error("disk full");
        }
    });
    EXPECT_EQ(Written(1, value).text, "---ERROR: Exception occurred when parsing data !\n");
}

}  // namespace
