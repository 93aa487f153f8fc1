#include "notification/alarm_record.h"

#include <string>

#include "notification/event_data.h"
#include "notification/event_types.h"
#include "notification/supplier.h"
#include "time/timechange.h"

namespace NS_CORBA {

namespace {

void AppendTimes(std::stringstream& out, AlarmRecordForm form, long disposalTime) {
    out << "--- DisposalTime: " << std::to_string(disposalTime);
    if (form == AlarmRecordForm::kPushed) {
        out << "ms";
    } else {
        out << " ms, SendTime:  " << TimeChange::getLocalTime();
    }
}

/// The id to show, null to break the stream.
const char* ShownId(AlarmRecordForm form, const char* id) {
    if (id || form == AlarmRecordForm::kBatch) {
        return id;
    }
    return form == AlarmRecordForm::kPushed ? "" : "Invalid Id";
}

void AppendText(std::stringstream& out, const char* text) {
    if (text) {
        out << text;
    } else {
        out.setstate(std::ios::badbit);
    }
}

}  // namespace

void AppendAlarmRecord(std::stringstream& out, AlarmRecordForm form, long disposalTime,
                       const CosNotification::StructuredEvent& event, SuppilerMgr& manager) {
    const char* const id = ShownId(form, NotificationIdOf(event));
    AppendTimes(out, form, disposalTime);
    out << ", NotificationID:  ";
    AppendText(out, id);
    out << ", EventType:  " << kAlarm << '\n'
        << "---EventInfo: {"
        << "{notificationId value ";
    AppendText(out, id);
    out << '}';
    manager.StructuredEventToStr(out, event);
    out << (form == AlarmRecordForm::kDrained ? "}" : "}\n");
}

}  // namespace NS_CORBA
