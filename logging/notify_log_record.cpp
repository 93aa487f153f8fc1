#include <orbsvcs/CosNotificationC.h>
#include <tao/DynamicAny/DynAnyFactory.h>

#include <stdexcept>

#include "logging/corbalogutil.h"
#include "logging/log_writer.h"
#include "logging/logmgr.h"
#include "logging/record_stamp.h"
#include "orb/portability.h"

// The records of events, and any value as a debug text.

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kCorbaExceptionLine = 1246;
constexpr int kOtherExceptionLine = 1250;
constexpr int kTraceLevel = 3;

/// Ends and releases a DynAny however its use ends.
class DynAnyOwner {
  public:
    explicit DynAnyOwner(DynamicAny::DynAny_ptr value) : m_value(value) {}
    ~DynAnyOwner() {
        try {
            if (!CORBA::is_nil(m_value.in())) {
                m_value->destroy();
            }
        } catch (const CORBA::Exception&) {
            // What can't be ended is at least released.
            return;
        }
    }
    DynAnyOwner(const DynAnyOwner&) = delete;
    DynAnyOwner& operator=(const DynAnyOwner&) = delete;

    DynamicAny::DynAny_ptr in() const { return m_value.in(); }

  private:
    DynamicAny::DynAny_var m_value;
};

bool ShowsRemainder(const std::string& eventType) {
    return eventType == "NT_OBJECT_CREATION" || eventType == "NT_OBJECT_DELETION" ||
           eventType == "NT_STATE_CHANGE";
}

std::string NotificationIdOf(const CosNotification::FilterableEventBody& fields) {
    if (fields.length() == 0) {
        return "";
    }
    const char* id = nullptr;
    if (!(fields[0].value >>= id) || !id) {
        throw std::logic_error("the first field of an event holds no string");
    }
    return id;
}

/// Runs `step`, and turns what it raises into a result, a line in the log and a mark in `text`.
template <class Step>
int Guarded(std::string& text, Step step) {
    const auto failed = [&text] {
        text += "---ERROR: Exception occurred when parsing notification event!";
        return -1;
    };
    try {
        return step();
    } catch (const CORBA::Exception& ex) {
        const int result = failed();
        SetPos(kSourceFile, kCorbaExceptionLine);
        TaDebugWithPara(
            kTraceLevel,
            "[CorbaLogMgr::GetNotifyLogRecord] CORBA exception <%s> received when parsing notification "
            "event!",
            qv_orb::ExceptionText(ex).c_str());
        return result;
    } catch (...) {
        const int result = failed();
        SetPos(kSourceFile, kOtherExceptionLine);
        TaDebug(
            kTraceLevel,
            "[CorbaLogMgr::GetNotifyLogRecord] CORBA exception  received when parsing notification event!");
        return result;
    }
}

}  // namespace

int LogFormatter<TANotifyRecord>::operator()(std::string& out, TANotifyRecord&& record) const {
    constexpr int kNoLevel = -1;
    out = "--- NotificationID:  ";
    out += record.notificationId;
    out += ",";
    out += " EventType:  ";
    out += record.eventType;
    out += "\n---";
    out += record.eventInfo;
    return kNoLevel;
}

void CorbaLogMgr::WriteNotifyLog(const CosNotification::StructuredEvent& event) {
    if (!m_bLogNotify) {
        return;
    }
    TANotifyRecord record;
    if (GetNotifyLogRecord(event, record) != 0) {
        record.eventInfo += "...this record is not full!";
    }
    m_pNotifyLog->Write(std::move(record));
}

int CorbaLogMgr::GetNotifyLogRecord(const CosNotification::StructuredEvent& event, TANotifyRecord& record) {
    return Guarded(record.eventInfo, [&] {
        record.threadId = RecordThreadId();
        record.time = RecordTime();
        record.eventType = event.header.fixed_header.event_type.type_name.in();
        record.notificationId = NotificationIdOf(event.filterable_data);
        const auto [fields, status] = GetInfoFromEvent(event);
        record.eventInfo += "EventInfo: ";
        record.eventInfo += fields;
        int result = status;
        if (ShowsRemainder(record.eventType)) {
            std::string remainder;
            result = PrintWhole(event.remainder_of_body, remainder);
            record.eventInfo += "------";
            record.eventInfo += "remainder_of_body: ";
            record.eventInfo += remainder;
        }
        record.eventInfo += '\n';
        return result;
    });
}

// Printed as the ORB marshals it, without a DynAny: the text is the same, and those who push events wait for
// it.
std::pair<std::string, int> CorbaLogMgr::GetInfoFromEvent(const CosNotification::StructuredEvent& event) {
    CORBA::Any fields;
    fields <<= event.filterable_data;
    std::string text;
    const int status = PrintWhole(fields, text);
    return {std::move(text), status};
}

void CorbaLogMgr::WriteTmfLog(int level, const CORBA::Any& value) {
    std::ostringstream text;
    try {
        const DynAnyOwner dynAny(TAO_DynAnyFactory().create_dyn_any(value));
        if (!CORBA::is_nil(dynAny.in())) {
            ParseAnyData(dynAny.in(), text);
            text << '\n';
        }
    } catch (...) {
        text << "---ERROR: Exception occurred when parsing data !\n";
    }
    TADebug(level, text.str().c_str());
}

}  // namespace NS_CORBA
