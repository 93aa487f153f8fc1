#include "services/notify/queue/event.h"

#include <cstring>

#include "orb/value_access.h"

namespace qv_notify {
namespace {

constexpr std::size_t kAllocation = 16;  // what the heap takes beyond the contents
constexpr std::size_t kAnyExtra = 330;  // the TypeCode and the buffer with the value, which has room to spare

std::size_t MemoryOfText(const char* text) {
    return std::strlen(text) + 1 + kAllocation;
}

std::size_t MemoryOfValue(const CORBA::Any& any) {
    try {
        return kAnyExtra + qv_orb::ValueBytes(any).size();
    } catch (const CORBA::SystemException&) {
        return kAnyExtra;  // delivering it will fail, too
    }
}

std::size_t MemoryOfProperties(const CosNotification::PropertySeq& properties) {
    std::size_t bytes = kAllocation + properties.length() * sizeof(CosNotification::Property);
    for (CORBA::ULong i = 0; i < properties.length(); ++i) {
        bytes += MemoryOfText(properties[i].name) + MemoryOfValue(properties[i].value);
    }
    return bytes;
}

}  // namespace

std::size_t MemoryOf(const CosNotification::StructuredEvent& event) {
    const CosNotification::FixedEventHeader& header = event.header.fixed_header;
    return sizeof(Event) + kAllocation + MemoryOfText(header.event_type.domain_name) +
           MemoryOfText(header.event_type.type_name) + MemoryOfText(header.event_name) +
           MemoryOfProperties(event.header.variable_header) + MemoryOfProperties(event.filterable_data) +
           MemoryOfValue(event.remainder_of_body);
}

}  // namespace qv_notify
