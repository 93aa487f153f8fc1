#include "demo/agent/event_mapping.h"

#include "demo/agent/element_mapping.h"
#include "notification/supplier.h"
#include "notificationsC.h"

namespace qv_demo {
namespace {

constexpr const char* kId = "notificationId";
constexpr const char* kObjectName = "objectName";
constexpr const char* kSeverity = "perceivedSeverity";
constexpr const char* kText = "additionalText";
constexpr const char* kNumber = "eventNumber";

/// The filterable part of an event, entry by entry.
class Fields {
  public:
    explicit Fields(CosNotification::FilterableEventBody& body) : body_(body) {}

    template <class Value>
    void Add(const char* name, const Value& value) {
        const CORBA::ULong last = body_.length();
        body_.length(last + 1);
        body_[last].name = name;
        body_[last].value <<= value;
    }

  private:
    CosNotification::FilterableEventBody& body_;
};

notifications::PerceivedSeverity_T ToSeverity(EventSeverity severity) {
    switch (severity) {
        case EventSeverity::kCritical:
            return notifications::PS_CRITICAL;
        case EventSeverity::kMajor:
            return notifications::PS_MAJOR;
        case EventSeverity::kMinor:
            return notifications::PS_MINOR;
        case EventSeverity::kWarning:
            return notifications::PS_WARNING;
        case EventSeverity::kCleared:
            return notifications::PS_CLEARED;
        default:
            return notifications::PS_INDETERMINATE;
    }
}

void AddAlarm(Fields& fields, const PlannedEvent& event) {
    fields.Add("isClearable", CORBA::Any::from_boolean(true));
    fields.Add(kSeverity, ToSeverity(event.severity));
    fields.Add("serviceAffecting", notifications::SA_UNKNOWN);
    fields.Add("nativeProbableCause", event.text.c_str());
}

void AddChange(Fields& fields, const PlannedEvent& event) {
    notifications::NVList_T list;
    list.length(1);
    list[0].name = event.attribute.c_str();
    list[0].value <<= event.value.c_str();
    fields.Add("attributeList", list);
}

const CORBA::Any* Find(const CosNotification::StructuredEvent& event, const std::string& name) {
    for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
        if (name == event.filterable_data[i].name.in()) {
            return &event.filterable_data[i].value;
        }
    }
    return nullptr;
}

std::string Text(const CosNotification::StructuredEvent& event, const char* name) {
    const CORBA::Any* const value = Find(event, name);
    const char* text = nullptr;
    return value != nullptr && (*value >>= text) ? text : "";
}

std::string ObjectOf(const CosNotification::StructuredEvent& event) {
    const CORBA::Any* const value = Find(event, kObjectName);
    const globaldefs::NamingAttributes_T* name = nullptr;
    return value != nullptr && (*value >>= name) && name->length() > 0
               ? (*name)[name->length() - 1].value.in()
               : "";
}

}  // namespace

CosNotification::StructuredEvent ToStructuredEvent(const PlannedEvent& event, const std::string& ems,
                                                   const std::string& time) {
    CosNotification::StructuredEvent result;
    NS_CORBA::fillFixedHeader(TypeName(event.kind), result);
    globaldefs::NamingAttributes_T object;
    if (event.element.empty()) {
        SetEmsName(object, ems);
    } else {
        SetElementName(object, ems, event.element);
    }
    Fields fields(result.filterable_data);
    fields.Add(kId, "");
    fields.Add(kObjectName, object);
    fields.Add("objectType",
               event.element.empty() ? notifications::OT_EMS : notifications::OT_MANAGED_ELEMENT);
    fields.Add("emsTime", time.c_str());
    if (event.kind == EventKind::kAlarm) {
        AddAlarm(fields, event);
    } else if (event.kind == EventKind::kAttributeChange) {
        AddChange(fields, event);
    }
    fields.Add(kText, event.text.c_str());
    fields.Add(kNumber, static_cast<CORBA::ULong>(event.number));
    result.remainder_of_body <<= "";
    return result;
}

std::string NotificationIdOf(const CosNotification::StructuredEvent& event) {
    return Text(event, kId);
}

void AppendAlarmText(std::stringstream& out, const CosNotification::StructuredEvent& event) {
    using NS_CORBA::SuppilerMgr;
    SuppilerMgr::FormatLog(kObjectName, ObjectOf(event), out);
    notifications::PerceivedSeverity_T severity{};
    if (const CORBA::Any* const value = Find(event, kSeverity); value != nullptr && (*value >>= severity)) {
        SuppilerMgr::FormatLog(kSeverity, static_cast<int>(severity), out);
    }
    CORBA::ULong number = 0;
    if (const CORBA::Any* const value = Find(event, kNumber); value != nullptr && (*value >>= number)) {
        SuppilerMgr::FormatLog(kNumber, static_cast<int>(number), out);
    }
    SuppilerMgr::FormatLog(kText, Text(event, kText), out);
}

}  // namespace qv_demo
