#include "services/notify/etcl/event_parts.h"

#include <type_traits>

namespace qv_notify::etcl {

namespace {

using Node = Place::Node;

constexpr TypeNames kPropertySeq{"PropertySeq", "IDL:omg.org/CosNotification/PropertySeq:1.0"};
constexpr TypeNames kVariableHeader{"OptionalHeaderFields",
                                    "IDL:omg.org/CosNotification/OptionalHeaderFields:1.0"};
constexpr TypeNames kFilterableData{"FilterableEventBody",
                                    "IDL:omg.org/CosNotification/FilterableEventBody:1.0"};

template <std::size_t count>
std::size_t Find(const std::string_view (&names)[count], std::string_view name) {
    for (std::size_t i = 0; i < count; ++i) {
        if (names[i] == name) {
            return i;
        }
    }
    return kNoPosition;
}

std::size_t Position(const CosNotification::StructuredEvent*, std::string_view name) {
    static constexpr std::string_view kNames[] = {"header", "filterable_data", "remainder_of_body"};
    return Find(kNames, name);
}

std::size_t Position(const CosNotification::EventHeader*, std::string_view name) {
    static constexpr std::string_view kNames[] = {"fixed_header", "variable_header"};
    return Find(kNames, name);
}

std::size_t Position(const CosNotification::FixedEventHeader*, std::string_view name) {
    static constexpr std::string_view kNames[] = {"event_type", "event_name"};
    return Find(kNames, name);
}

std::size_t Position(const CosNotification::EventType*, std::string_view name) {
    static constexpr std::string_view kNames[] = {"domain_name", "type_name"};
    return Find(kNames, name);
}

std::size_t Position(const CosNotification::Property*, std::string_view name) {
    static constexpr std::string_view kNames[] = {"name", "value"};
    return Find(kNames, name);
}

std::size_t Position(const Place::Time&, std::string_view name) {
    static constexpr std::string_view kNames[] = {"time", "inacclo", "inacchi", "tdf"};
    return Find(kNames, name);
}

Node At(const CosNotification::StructuredEvent* event, std::uint64_t position, const CORBA::Any*& any) {
    switch (position) {
        case 0:
            return &event->header;
        case 1:
            return Place::Properties{&event->filterable_data, &kFilterableData};
        case 2:
            any = &event->remainder_of_body;
            return {};
        default:
            return {};
    }
}

Node At(const CosNotification::EventHeader* header, std::uint64_t position, const CORBA::Any*&) {
    switch (position) {
        case 0:
            return &header->fixed_header;
        case 1:
            return Place::Properties{&header->variable_header, &kVariableHeader};
        default:
            return {};
    }
}

Node At(const CosNotification::FixedEventHeader* header, std::uint64_t position, const CORBA::Any*&) {
    switch (position) {
        case 0:
            return &header->event_type;
        case 1:
            return std::string_view(header->event_name.in());
        default:
            return {};
    }
}

Node At(const CosNotification::EventType* type, std::uint64_t position, const CORBA::Any*&) {
    switch (position) {
        case 0:
            return std::string_view(type->domain_name.in());
        case 1:
            return std::string_view(type->type_name.in());
        default:
            return {};
    }
}

Node At(const CosNotification::Property* property, std::uint64_t position, const CORBA::Any*& any) {
    switch (position) {
        case 0:
            return std::string_view(property->name.in());
        case 1:
            any = &property->value;
            return {};
        default:
            return {};
    }
}

/// The clock tells neither an inaccuracy nor a displacement.
Node At(const Place::Time& time, std::uint64_t position, const CORBA::Any*&) {
    constexpr std::uint64_t kMembers = 4;
    if (position >= kMembers) {
        return {};
    }
    return Number::OfUnsigned(position == 0 ? time.value : 0);
}

TypeNames NamesOf(const CosNotification::StructuredEvent*) {
    return {"StructuredEvent", "IDL:omg.org/CosNotification/StructuredEvent:1.0"};
}

TypeNames NamesOf(const CosNotification::EventHeader*) {
    return {"EventHeader", "IDL:omg.org/CosNotification/EventHeader:1.0"};
}

TypeNames NamesOf(const CosNotification::FixedEventHeader*) {
    return {"FixedEventHeader", "IDL:omg.org/CosNotification/FixedEventHeader:1.0"};
}

TypeNames NamesOf(const CosNotification::EventType*) {
    return {"EventType", "IDL:omg.org/CosNotification/EventType:1.0"};
}

TypeNames NamesOf(const CosNotification::Property*) {
    return {"Property", "IDL:omg.org/CosNotification/Property:1.0"};
}

TypeNames NamesOf(const Place::Properties& properties) {
    return *properties.type;
}

TypeNames NamesOf(const Place::Time&) {
    return {"UtcT", "IDL:omg.org/TimeBase/UtcT:1.0"};
}

// What has no members, and no type of its own.
template <class Part>
constexpr bool kIsStructure = !std::is_same_v<Part, std::monostate> && !std::is_same_v<Part, Number> &&
                              !std::is_same_v<Part, std::string_view> && !std::is_same_v<Part, ValuePlace> &&
                              !std::is_same_v<Part, Place::Properties>;

}  // namespace

std::size_t PositionOf(const Place::Node& node, std::string_view member) {
    return std::visit(
        [&](const auto& part) {
            using Part = std::decay_t<decltype(part)>;
            if constexpr (kIsStructure<Part>) {
                return Position(part, member);
            } else {
                return kNoPosition;
            }
        },
        node);
}

Place::Node PartAt(const Place::Node& node, std::uint64_t position, const CORBA::Any*& any) {
    return std::visit(
        [&](const auto& part) -> Node {
            using Part = std::decay_t<decltype(part)>;
            if constexpr (kIsStructure<Part>) {
                return At(part, position, any);
            } else {
                return {};
            }
        },
        node);
}

TypeNames TypeNamesOf(const Place::Node& node) {
    return std::visit(
        [](const auto& part) -> TypeNames {
            using Part = std::decay_t<decltype(part)>;
            if constexpr (kIsStructure<Part> || std::is_same_v<Part, Place::Properties>) {
                return NamesOf(part);
            } else {
                return {};
            }
        },
        node);
}

Place::Properties PropertyList(const CosNotification::PropertySeq& properties) {
    return {&properties, &kPropertySeq};
}

}  // namespace qv_notify::etcl
