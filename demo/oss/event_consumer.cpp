#include "demo/oss/event_consumer.h"

#include <array>

#include "globaldefsC.h"
#include "notificationsC.h"

namespace qv_oss {
namespace {

std::string TextOf(const CORBA::Any& value) {
    const char* text = nullptr;
    return (value >>= text) ? text : "";
}

std::string ObjectOf(const CORBA::Any& value) {
    const globaldefs::NamingAttributes_T* name = nullptr;
    return (value >>= name) && name->length() > 0 ? (*name)[name->length() - 1].value.in() : "";
}

std::string SeverityOf(const CORBA::Any& value) {
    static constexpr std::array kNames{"INDETERMINATE", "CRITICAL", "MAJOR", "MINOR", "WARNING", "CLEARED"};
    notifications::PerceivedSeverity_T severity{};
    const bool known = (value >>= severity) && static_cast<std::size_t>(severity) < kNames.size();
    return known ? kNames[static_cast<std::size_t>(severity)] : "";
}

}  // namespace

EventFields FieldsOf(const CosNotification::StructuredEvent& event) {
    EventFields fields;
    fields.type = event.header.fixed_header.event_type.type_name.in();
    for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
        const std::string name = event.filterable_data[i].name.in();
        const CORBA::Any& value = event.filterable_data[i].value;
        if (name == "notificationId") {
            fields.id = TextOf(value);
        } else if (name == "emsTime") {
            fields.time = TextOf(value);
        } else if (name == "perceivedSeverity") {
            fields.severity = SeverityOf(value);
        } else if (name == "objectName") {
            fields.object = ObjectOf(value);
        } else if (name == "additionalText") {
            fields.text = TextOf(value);
        }
    }
    return fields;
}

void EventConsumer::push_structured_event(const CosNotification::StructuredEvent& event) {
    watch_.Show(FieldsOf(event));
}

void EventConsumer::disconnect_structured_push_consumer() {
    watch_.Remark("the notification service ends the subscription");
}

void EventConsumer::offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) {
}

}  // namespace qv_oss
