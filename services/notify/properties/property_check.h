#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <optional>

#include "services/notify/properties/property_table.h"
#include "services/notify/properties/property_values.h"

namespace qv_notify {

/// The value in an Any, when it is of the same type as `like`.
std::optional<PropertyValue> ReadValue(const CORBA::Any& any, const PropertyValue& like);

/// The moment in an Any with an UtcT: units of 100 ns since 1582-10-15.
std::optional<std::uint64_t> ReadMoment(const CORBA::Any& any);

void WriteValue(const PropertyValue& value, CORBA::Any& any);
CosNotification::PropertyRange ToAnys(const Range& range);

bool Contains(const Range& range, const PropertyValue& value);

/// Appends an error; without a range its Anys are empty.
void AppendError(CosNotification::PropertyErrorSeq& errors, const char* name,
                 CosNotification::QoSError_code code, const std::optional<Range>& range = std::nullopt);

}  // namespace qv_notify
