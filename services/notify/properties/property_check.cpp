#include "services/notify/properties/property_check.h"

#include <tao/TimeBaseC.h>

namespace qv_notify {
namespace {

template <class Value, class InAny>
std::optional<PropertyValue> Extract(const CORBA::Any& any) {
    InAny value = 0;
    if (!(any >>= value)) {
        return std::nullopt;
    }
    return PropertyValue(std::in_place_type<Value>, value);
}

std::optional<PropertyValue> ExtractBoolean(const CORBA::Any& any) {
    CORBA::Boolean value = false;
    if (!(any >>= CORBA::Any::to_boolean(value))) {
        return std::nullopt;
    }
    return PropertyValue(std::in_place_type<bool>, value);
}

struct Insert {
    CORBA::Any& any;
    void operator()(bool value) const { any <<= CORBA::Any::from_boolean(value); }
    void operator()(std::int16_t value) const { any <<= static_cast<CORBA::Short>(value); }
    void operator()(std::int32_t value) const { any <<= static_cast<CORBA::Long>(value); }
    void operator()(std::uint64_t value) const { any <<= static_cast<CORBA::ULongLong>(value); }
};

}  // namespace

std::optional<PropertyValue> ReadValue(const CORBA::Any& any, const PropertyValue& like) {
    if (std::holds_alternative<bool>(like)) {
        return ExtractBoolean(any);
    }
    if (std::holds_alternative<std::int16_t>(like)) {
        return Extract<std::int16_t, CORBA::Short>(any);
    }
    if (std::holds_alternative<std::int32_t>(like)) {
        return Extract<std::int32_t, CORBA::Long>(any);
    }
    return Extract<std::uint64_t, CORBA::ULongLong>(any);
}

std::optional<std::uint64_t> ReadMoment(const CORBA::Any& any) {
    const TimeBase::UtcT* moment = nullptr;
    if (!(any >>= moment)) {
        return std::nullopt;
    }
    return moment->time;
}

void WriteValue(const PropertyValue& value, CORBA::Any& any) {
    std::visit(Insert{any}, value);
}

CosNotification::PropertyRange ToAnys(const Range& range) {
    CosNotification::PropertyRange anys;
    WriteValue(range.low, anys.low_val);
    WriteValue(range.high, anys.high_val);
    return anys;
}

bool Contains(const Range& range, const PropertyValue& value) {
    return range.low <= value && value <= range.high;
}

void AppendError(CosNotification::PropertyErrorSeq& errors, const char* name,
                 CosNotification::QoSError_code code, const std::optional<Range>& range) {
    const CORBA::ULong at = errors.length();
    errors.length(at + 1);
    errors[at].code = code;
    errors[at].name = name;
    if (range) {
        errors[at].available_range = ToAnys(*range);
    }
}

}  // namespace qv_notify
