#include "notification/channel_properties.h"

#include <tao/TimeBaseC.h>

namespace NS_CORBA {

namespace {

template <class Value>
void Append(CosNotification::PropertySeq& properties, const char* name, const Value& value) {
    const CORBA::ULong last = properties.length();
    properties.length(last + 1);
    properties[last].name = CORBA::string_dup(name);
    properties[last].value <<= value;
}

}  // namespace

CosNotification::QoSProperties ChannelQoS(bool persistent) {
    const CORBA::Short fifo = CosNotification::FifoOrder;
    const CORBA::Short reliability = persistent ? CosNotification::Persistent : CosNotification::BestEffort;
    const TimeBase::TimeT noPacing = 0;
    CosNotification::QoSProperties qos;
    Append(qos, "OrderPolicy", fifo);
    Append(qos, "DiscardPolicy", fifo);
    Append(qos, "EventReliability", reliability);
    if (persistent) {
        Append(qos, "ConnectionReliability", reliability);
    }
    Append(qos, "PacingInterval", noPacing);
    return qos;
}

CosNotification::AdminProperties ChannelAdminProperties() {
    CosNotification::AdminProperties admin;
    Append(admin, "RejectNewEvents", CORBA::Any::from_boolean(true));
    return admin;
}

}  // namespace NS_CORBA
