#pragma once

#include <ace/Event.h>
#include <ace/Time_Value.h>

#include "notification/internal_api.h"

namespace NS_CORBA {

/// How the supplier manager waits and reads the clock. Tests put in functions of their own, before other
/// threads run; nobody else changes it.
struct SupplierWaits {
    /// Waits for `event`, but no longer than `timeout`.
    void (*wait)(ACE_Event& event, const ACE_Time_Value& timeout);
    /// The time of day.
    ACE_Time_Value (*now)();
};

extern QV_INTERNAL_API SupplierWaits g_supplierWaits;

/// Waits up to `seconds` for `event`.
inline void WaitFor(ACE_Event& event, time_t seconds) {
    g_supplierWaits.wait(event, ACE_Time_Value(seconds));
}

/// The milliseconds, rounded down, from `start` to now.
inline long MillisecondsSince(const ACE_Time_Value& start) {
    const ACE_Time_Value passed = g_supplierWaits.now() - start;
    return static_cast<long>(passed.sec()) * 1000 + static_cast<long>(passed.usec()) / 1000;
}

}  // namespace NS_CORBA
