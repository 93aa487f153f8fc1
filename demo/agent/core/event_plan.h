#pragma once

#include <cstdint>
#include <string>

#include "demo/agent/core/inventory.h"

namespace qv_demo {

enum class EventKind { kAlarm, kAttributeChange, kHeartbeat };
enum class EventSeverity { kNone, kCritical, kMajor, kMinor, kWarning, kCleared };

/// One event as the demo makes it up, before it has the form of the interface.
struct PlannedEvent {
    std::uint32_t number = 0;  ///< counted from 1 over all events of the agent's run
    EventKind kind = EventKind::kHeartbeat;
    EventSeverity severity = EventSeverity::kNone;  ///< of alarms
    std::string element;                            ///< empty: the EMS itself
    std::string text;
    std::string attribute;  ///< of changes of an attribute
    std::string value;
};

/// The alarm or change of an attribute of that number. The same number and inventory always give the same
/// event: of five in a row, four are alarms of different severities and the last one is a change.
PlannedEvent PlanEvent(std::uint32_t number, const Inventory& inventory);

PlannedEvent PlanHeartbeat(std::uint32_t number);

/// The interface's name of the type, as "NT_ALARM".
const char* TypeName(EventKind kind);

/// The interface's name of the severity, as "PS_CRITICAL"; empty for none.
const char* SeverityName(EventSeverity severity);

}  // namespace qv_demo
