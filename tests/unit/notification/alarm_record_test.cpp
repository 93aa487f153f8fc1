#include "notification/alarm_record.h"

#include "tests/unit/notification/supplier_fixture.h"
#include "time/timechange.h"

namespace qv_test {
namespace {

using Form = NS_CORBA::AlarmRecordForm;

class AlarmRecord : public SupplierTest {
  protected:
    /// The record with the send time, which is now, replaced by "<now>".
    std::string Record(Form form, const StructuredEvent& event, long disposalTime = 12) {
        std::stringstream out;
        NS_CORBA::AppendAlarmRecord(out, form, disposalTime, event, *manager);
        std::string text = out.str();
        const std::string mark = "SendTime:  ";
        const std::size_t at = text.find(mark);
        if (at != std::string::npos) {
            const std::string time = text.substr(at + mark.size(), 14);
            EXPECT_LE(m_before, time);
            EXPECT_GE(NS_CORBA::TimeChange::getLocalTime(), time);
            text.replace(at + mark.size(), 14, "<now>");
        }
        return text;
    }

    static StructuredEvent Alarm(const char* id) {
        StructuredEvent event = MakeEvent("NT_ALARM");
        event.filterable_data[0].value <<= id;
        return event;
    }
    static StructuredEvent AlarmWithoutId() {
        StructuredEvent event = MakeEvent("NT_ALARM");
        event.filterable_data[0].value <<= CORBA::Long(7);
        return event;
    }

    const std::string m_before = NS_CORBA::TimeChange::getLocalTime();
};

TEST_F(AlarmRecord, OfASinglePush) {
    EXPECT_EQ(
        "--- DisposalTime: 12ms, NotificationID:  11140941021, EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value 11140941021}}\n",
        Record(Form::kPushed, Alarm("11140941021")));
}

TEST_F(AlarmRecord, OfASupplierThread) {
    EXPECT_EQ(
        "--- DisposalTime: 12 ms, SendTime:  <now>, NotificationID:  11140941021, EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value 11140941021}}",
        Record(Form::kDrained, Alarm("11140941021")));
}

TEST_F(AlarmRecord, OfABatch) {
    EXPECT_EQ(
        "--- DisposalTime: 12 ms, SendTime:  <now>, NotificationID:  11140941021, EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value 11140941021}}\n",
        Record(Form::kBatch, Alarm("11140941021")));
}

TEST_F(AlarmRecord, HoldsTheTextOfTheCallbackObject) {
    callback.alarmText = "{name a value b}";
    for (const Form form : {Form::kPushed, Form::kDrained, Form::kBatch}) {
        const std::string record = Record(form, Alarm("1"));
        EXPECT_NE(std::string::npos, record.find("---EventInfo: {{notificationId value 1}{name a value b}}"));
    }
}

TEST_F(AlarmRecord, KeepsItsFrameWithoutACallbackObject) {
    manager->m_pCallBackObj = nullptr;
    EXPECT_EQ(
        "--- DisposalTime: 0ms, NotificationID:  1, EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value 1}}\n",
        Record(Form::kPushed, Alarm("1"), 0));
}

TEST_F(AlarmRecord, ShowsAnIdThatCantBeReadInThreeWays) {
    EXPECT_EQ(
        "--- DisposalTime: 12ms, NotificationID:  , EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value }}\n",
        Record(Form::kPushed, AlarmWithoutId()));
    EXPECT_EQ(
        "--- DisposalTime: 12 ms, SendTime:  <now>, NotificationID:  Invalid Id, EventType:  NT_ALARM\n"
        "---EventInfo: {{notificationId value Invalid Id}}",
        Record(Form::kDrained, AlarmWithoutId()));
    EXPECT_EQ("--- DisposalTime: 12 ms, SendTime:  <now>, NotificationID:  ",
              Record(Form::kBatch, AlarmWithoutId()));
}

TEST_F(AlarmRecord, BreaksTheStreamOfABatchWhoseIdCantBeRead) {
    std::stringstream out;
    NS_CORBA::AppendAlarmRecord(out, Form::kBatch, 1, AlarmWithoutId(), *manager);
    EXPECT_TRUE(out.bad());
    const std::string text = out.str();
    NS_CORBA::AppendAlarmRecord(out, Form::kBatch, 1, Alarm("1"), *manager);
    EXPECT_EQ(text, out.str());
}

}  // namespace
}  // namespace qv_test
