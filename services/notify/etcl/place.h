#pragma once

#include <orbsvcs/CosNotificationC.h>
#include <tao/TimeBaseC.h>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "orb/value_access.h"
#include "services/notify/etcl/component_path.h"
#include "services/notify/etcl/number.h"
#include "services/notify/etcl/value_place.h"

namespace qv_notify::etcl {

/// What a constraint is evaluated for.
using Event = std::variant<const CosNotification::StructuredEvent*, const CosNotification::PropertySeq*,
                           const CORBA::Any*>;

struct TypeNames {
    std::string_view name;
    std::string_view repository_id;
};

/// A place inside of an event: a part of its structures, a place in the value of one of its Anys, or what is
/// told about these (a length, the name of a type). Steps lead from one to the next without anything being
/// copied. A step that returns false leaves a place of no use. Refers to the event, which has to stay. Raises
/// CORBA system exceptions for values that can't be read. Used by one thread.
class Place {
  public:
    struct Properties {
        const CosNotification::PropertySeq* list;
        const TypeNames* type;
    };
    struct Time {
        TimeBase::TimeT value;
    };
    /// Nothing yet, parts of events, a text, a number, a place in a value.
    using Node = std::variant<std::monostate, const CosNotification::StructuredEvent*,
                              const CosNotification::EventHeader*, const CosNotification::FixedEventHeader*,
                              const CosNotification::EventType*, Properties, const CosNotification::Property*,
                              Time, std::string_view, Number, ValuePlace>;

    Place() = default;
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    void Set(const Event& event);
    void Set(const CORBA::Any& any);
    void Set(const CosNotification::StructuredEvent& event) { m_node = &event; }
    void Set(std::string_view text) { m_node = text; }
    void Set(Time time) { m_node = time; }

    bool Take(const ComponentPath::Step& step);

    /// The steps that the short form of names takes as well.
    bool ToMember(std::string_view name);
    bool ToPair(const std::string& name);

    bool DefaultIsActive(bool& active);

    const Node& node() const { return m_node; }
    Node& node() { return m_node; }

  private:
    bool ToPosition(std::uint64_t position);
    bool ToElement(std::uint64_t index);
    bool ToLength();
    bool ToTypeName();
    bool ToRepositoryId();
    bool ToName(std::string_view text);

    std::optional<qv_orb::ValueBytes> m_bytes;  // of the Any in which the place lies
    std::string m_name;                         // of a type, which is gone with the place of that type
    Node m_node;
};

/// The value of the first property of that name; null when there is none.
const CORBA::Any* FindProperty(const CosNotification::PropertySeq& properties, const std::string& name);

}  // namespace qv_notify::etcl
