#include "demo/agent/core/event_plan.h"

#include <array>

namespace qv_demo {
namespace {

struct Fault {
    EventSeverity severity;
    const char* text;
};

constexpr std::array<Fault, 8> kFaults{{
    {EventSeverity::kCritical, "loss of signal"},
    {EventSeverity::kMajor, "laser bias high"},
    {EventSeverity::kMinor, "fan speed low"},
    {EventSeverity::kWarning, "clock on holdover"},
    {EventSeverity::kCleared, "loss of signal"},
    {EventSeverity::kMajor, "loss of frame"},
    {EventSeverity::kMinor, "temperature high"},
    {EventSeverity::kWarning, "database full to 90 %"},
}};
constexpr std::uint32_t kRound = 5;
constexpr std::uint32_t kStride = 7;  // neighbouring events are of different elements

std::string ElementOf(std::uint32_t number, const Inventory& inventory) {
    std::string name;
    if (inventory.size() > 0) {
        const std::size_t position = std::size_t{number} * kStride % inventory.size();
        inventory.ForRange(position, 1, [&](const Element& element) { name = element.name; });
    }
    return name;
}

}  // namespace

PlannedEvent PlanEvent(std::uint32_t number, const Inventory& inventory) {
    PlannedEvent event;
    event.number = number;
    event.element = ElementOf(number, inventory);
    const std::uint32_t place = number % kRound;
    if (place == 0) {
        event.kind = EventKind::kAttributeChange;
        event.attribute = "userLabel";
        event.value = "label-" + std::to_string(number);
        event.text = event.attribute + " = " + event.value;
        return event;
    }
    const Fault& fault = kFaults[(number / kRound % 2) * (kRound - 1) + place - 1];
    event.kind = EventKind::kAlarm;
    event.severity = fault.severity;
    event.text = fault.text;
    return event;
}

PlannedEvent PlanHeartbeat(std::uint32_t number) {
    PlannedEvent event;
    event.number = number;
    event.text = "the EMS is alive";
    return event;
}

const char* TypeName(EventKind kind) {
    switch (kind) {
        case EventKind::kAlarm:
            return "NT_ALARM";
        case EventKind::kAttributeChange:
            return "NT_ATTRIBUTE_VALUE_CHANGE";
        default:
            return "NT_HEARTBEAT";
    }
}

const char* SeverityName(EventSeverity severity) {
    switch (severity) {
        case EventSeverity::kCritical:
            return "PS_CRITICAL";
        case EventSeverity::kMajor:
            return "PS_MAJOR";
        case EventSeverity::kMinor:
            return "PS_MINOR";
        case EventSeverity::kWarning:
            return "PS_WARNING";
        case EventSeverity::kCleared:
            return "PS_CLEARED";
        default:
            return "";
    }
}

}  // namespace qv_demo
