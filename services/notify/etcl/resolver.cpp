#include "services/notify/etcl/resolver.h"

#include <initializer_list>

namespace qv_notify::etcl {

namespace {

using Start = ComponentPath::Start;

bool ToMembers(Place& place, std::initializer_list<std::string_view> members) {
    for (const std::string_view member : members) {
        if (!place.ToMember(member)) {
            return false;
        }
    }
    return true;
}

/// From the event to its member of that path.
bool FromEvent(const Event& event, Place& place, std::initializer_list<std::string_view> members) {
    place.Set(event);
    return ToMembers(place, members);
}

bool SetText(Place& place, const char* text) {
    place.Set(std::string_view(text));
    return true;
}

bool SetFound(Place& place, const CORBA::Any* found) {
    if (found != nullptr) {
        place.Set(*found);
    }
    return found != nullptr;
}

/// In a structured event, which is the common case: the same as StartInValue without looking for members.
bool StartInStructured(const ComponentPath& path, const CosNotification::StructuredEvent& event,
                       Place& place) {
    const CosNotification::FixedEventHeader& fixed = event.header.fixed_header;
    switch (path.start) {
        case Start::kDomainName:
            return SetText(place, fixed.event_type.domain_name.in());
        case Start::kTypeName:
            return SetText(place, fixed.event_type.type_name.in());
        case Start::kEventName:
            return SetText(place, fixed.event_name.in());
        default:
            break;
    }
    if (SetFound(place, FindProperty(event.header.variable_header, path.name)) ||
        SetFound(place, FindProperty(event.filterable_data, path.name))) {
        return true;
    }
    place.Set(event);
    return place.ToMember(path.name);
}

/// In an Any, which may hold a structured event or anything else, or in a list of properties.
bool StartInValue(const ComponentPath& path, const Event& event, Place& place) {
    if ((path.start == Start::kDomainName || path.start == Start::kTypeName) &&
        FromEvent(event, place, {"header", "fixed_header", "event_type", path.name})) {
        return true;
    }
    if (FromEvent(event, place, {"header", "fixed_header", path.name}) ||
        (FromEvent(event, place, {"header", "variable_header"}) && place.ToPair(path.name)) ||
        (FromEvent(event, place, {"filterable_data"}) && place.ToPair(path.name)) ||
        FromEvent(event, place, {path.name})) {
        return true;
    }
    place.Set(event);
    return place.ToPair(path.name);
}

bool ToStart(const ComponentPath& path, const Event& event, const Clock& clock, Place& place) {
    if (path.start == Start::kEvent) {
        place.Set(event);
        return true;
    }
    if (path.start == Start::kCurrentTime) {
        place.Set(Place::Time{clock()});
        return true;
    }
    if (const auto* const structured = std::get_if<const CosNotification::StructuredEvent*>(&event)) {
        return StartInStructured(path, **structured, place);
    }
    return StartInValue(path, event, place);
}

}  // namespace

bool Resolve(const ComponentPath& path, std::size_t steps, const Event& event, const Clock& clock,
             Place& place) {
    if (!ToStart(path, event, clock, place)) {
        return false;
    }
    for (std::size_t i = 0; i < steps; ++i) {
        if (!place.Take(path.steps[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace qv_notify::etcl
