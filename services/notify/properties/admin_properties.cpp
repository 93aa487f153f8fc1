#include "services/notify/properties/admin_properties.h"

#include <limits>

#include "services/notify/properties/property_check.h"

namespace qv_notify {
namespace {

Range RangeOf(const PropertyValue& initial) {
    if (std::holds_alternative<bool>(initial)) {
        return {false, true};
    }
    return {std::int32_t{0}, std::numeric_limits<std::int32_t>::max()};
}

}  // namespace

PropertyValues DefaultAdmin() {
    return {{CosNotification::MaxQueueLength, std::int32_t{0}},
            {CosNotification::MaxConsumers, std::int32_t{0}},
            {CosNotification::MaxSuppliers, std::int32_t{0}},
            {CosNotification::RejectNewEvents, false}};
}

void ApplyAdmin(const CosNotification::AdminProperties& wanted, PropertyValues& settings) {
    const PropertyValues known = DefaultAdmin();
    PropertyValues result = settings;
    CosNotification::PropertyErrorSeq errors;
    for (CORBA::ULong i = 0; i < wanted.length(); ++i) {
        const char* const name = wanted[i].name;
        const auto found = known.find(name);
        if (found == known.end()) {
            AppendError(errors, name, CosNotification::BAD_PROPERTY);
            continue;
        }
        const auto value = ReadValue(wanted[i].value, found->second);
        if (!value) {
            AppendError(errors, name, CosNotification::BAD_TYPE);
        } else if (!Contains(RangeOf(found->second), *value)) {
            AppendError(errors, name, CosNotification::BAD_VALUE, RangeOf(found->second));
        } else {
            result[name] = *value;
        }
    }
    if (errors.length() > 0) {
        throw CosNotification::UnsupportedAdmin(errors);
    }
    settings = result;
}

}  // namespace qv_notify
