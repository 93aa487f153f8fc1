#include <orbsvcs/CosNotificationC.h>
#include <tao/TimeBaseC.h>

#include "agent/corbabaseagentconfig.h"
#include "notification/event_data.h"
#include "notification/event_types.h"
#include "notification/supplier.h"

namespace NS_CORBA {

namespace {

/// The bundle whose alarms bring their ids with them.
constexpr char kBundleWithOwnAlarmIds[] = "qv_xden_corbaagent_bundle";

constexpr TimeBase::TimeT kUnitsPerSecond = 10000000;  // of 100 nanoseconds

unsigned long TimeoutOf(const CosNotification::StructuredEvent& event) {
    const CorbaBaseAgentConfig& config = *CorbaBaseAgentConfig::Instance();
    if (IsOfType(event, kThresholdAlarm) || IsOfType(event, kAlarm) || IsOfType(event, kAlarmUpdated)) {
        return config.AlarmTimeout();
    }
    return IsOfType(event, kHeartBeat) ? config.HeartBeatTimeout() : config.OtherEventTimeout();
}

bool BringsItsId(const CosNotification::StructuredEvent& event) {
    return IsOfType(event, kAlarm) &&
           CorbaBaseAgentConfig::Instance()->GetCorbaBundleName() == kBundleWithOwnAlarmIds;
}

}  // namespace

int SuppilerMgr::FillEvent(CosNotification::StructuredEvent& event, std::string& notificationId) {
    CosNotification::PropertySeq& header = event.header.variable_header;
    header.length(1);
    if (!BringsItsId(event)) {
        GetNotificationID(notificationId);
        if (event.filterable_data.length() == 0) {
            throw CORBA::BAD_PARAM();
        }
        event.filterable_data[0].value <<= notificationId.c_str();
    }
    header[0].name = CORBA::string_dup("Timeout");
    header[0].value <<= static_cast<TimeBase::TimeT>(TimeoutOf(event)) * kUnitsPerSecond;
    return 0;
}

void SuppilerMgr::FormatLog(const std::string& name, const std::string& value, std::stringstream& out) {
    out << "{name " << name << " value " << value << '}';
}

void SuppilerMgr::FormatLog(const std::string& name, int value, std::stringstream& out) {
    FormatLog(name, std::to_string(value), out);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes it by value
void fillFixedHeader(std::string typeName, CosNotification::StructuredEvent& event) {
    CosNotification::FixedEventHeader& header = event.header.fixed_header;
    header.event_type.domain_name = CORBA::string_dup(kEventDomain);
    header.event_type.type_name = CORBA::string_dup(typeName.c_str());
    header.event_name = CORBA::string_dup("");
}

}  // namespace NS_CORBA
