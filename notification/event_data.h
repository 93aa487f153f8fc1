#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <cstring>

namespace NS_CORBA {

/// The type name of `event`, which stays the event's; never null.
inline const char* TypeName(const CosNotification::StructuredEvent& event) {
    const char* name = event.header.fixed_header.event_type.type_name.in();
    return name ? name : "";
}

inline bool IsOfType(const CosNotification::StructuredEvent& event, const char* type) {
    return std::strcmp(TypeName(event), type) == 0;
}

/// The value of the first filterable entry, which stays the event's; null when it isn't a string or there is
/// none.
inline const char* NotificationIdOf(const CosNotification::StructuredEvent& event) {
    const char* id = nullptr;
    if (event.filterable_data.length() == 0 || !(event.filterable_data[0].value >>= id)) {
        return nullptr;
    }
    return id;
}

}  // namespace NS_CORBA
