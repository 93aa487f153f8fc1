// The types of events that somebody offers or has subscribed to.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <string>
#include <vector>

#include "services/notify/store/description.h"

namespace qv_notify {

/// Whether an event of that domain and type is meant by `pattern`. In both parts of a pattern "*" stands for
/// any text, and nothing or "%ALL" for everything.
bool Means(const EventTypeName& pattern, const char* domain, const char* type);

std::vector<EventTypeName> NamesOf(const CosNotification::EventTypeSeq& types);
/// The caller owns the sequence.
CosNotification::EventTypeSeq* SequenceOf(const std::vector<EventTypeName>& types);

/// A set of event types, in the order in which they came. Who offers or subscribes to certain types after all
/// types means these from then on. Not thread-safe.
class TypeSet {
  public:
    struct Change {
        std::vector<EventTypeName> added;
        std::vector<EventTypeName> removed;
        bool Empty() const { return added.empty() && removed.empty(); }
    };

    TypeSet() = default;
    explicit TypeSet(std::vector<EventTypeName> types) : m_types(std::move(types)) {}
    /// What a proxy is subscribed to that has never been told otherwise.
    static TypeSet All() { return TypeSet(std::vector<EventTypeName>{{"*", "*"}}); }

    /// Returns what is different afterwards.
    Change Apply(const std::vector<EventTypeName>& added, const std::vector<EventTypeName>& removed);

    bool Matches(const CosNotification::StructuredEvent& event) const;
    const std::vector<EventTypeName>& Types() const { return m_types; }

  private:
    bool Holds(const EventTypeName& type) const;

    std::vector<EventTypeName> m_types;
};

}  // namespace qv_notify
