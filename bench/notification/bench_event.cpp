#include "bench/notification/bench_event.h"

namespace qv_bench {

namespace {

class Fields {
  public:
    explicit Fields(CosNotification::FilterableEventBody& body) : m_body(body) {}

    template <class T>
    void Add(const char* name, T value) {
        const CORBA::ULong next = m_body.length();
        m_body.length(next + 1);
        m_body[next].name = CORBA::string_dup(name);
        m_body[next].value <<= value;
    }

  private:
    CosNotification::FilterableEventBody& m_body;
};

}  // namespace

CosNotification::StructuredEvent AlarmEvent() {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup("tmf_mtnm");
    event.header.fixed_header.event_type.type_name = CORBA::string_dup("NT_ALARM");
    event.header.fixed_header.event_name = CORBA::string_dup("");
    constexpr TimeBase::TimeT kHour = TimeBase::TimeT{3600} * 10000000;
    Fields(event.header.variable_header).Add("Timeout", kHour);

    Fields fields(event.filterable_data);
    fields.Add("notificationId", "11140941021");
    fields.Add("objectName", "Zorvex/KLV/NE-00042/rack=1/shelf=2/slot=7/port=3");
    fields.Add("nativeEMSName", "NE-00042 slot 7 port 3");
    fields.Add("emsTime", "20261114094102.0Z");
    fields.Add("neTime", "20261114094101.0Z");
    fields.Add("isClearable", CORBA::Any::from_boolean(true));
    fields.Add("layerRate", static_cast<CORBA::Short>(25));
    fields.Add("perceivedSeverity", static_cast<CORBA::Long>(2));
    fields.Add("serviceAffecting", static_cast<CORBA::ULong>(1));
    fields.Add("probableCause", "LOS");
    fields.Add("attenuation", CORBA::Double{12.5});
    fields.Add("sentAt", CORBA::ULongLong{0});
    event.remainder_of_body <<= "";
    return event;
}

}  // namespace qv_bench
