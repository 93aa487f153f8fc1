// The types of events that somebody offers or has subscribed to.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <cstddef>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "services/notify/properties/event_type_name.h"

namespace qv_notify {

/// Whether an event of that domain and type is meant by `pattern`. In both parts of a pattern "*" stands for
/// any text, and nothing or "%ALL" for everything.
bool Means(const EventTypeName& pattern, const char* domain, const char* type);

/// Some order, for lookups.
struct ByName {
    bool operator()(const EventTypeName& left, const EventTypeName& right) const {
        return std::tie(left.domain, left.type) < std::tie(right.domain, right.type);
    }
};
using SortedTypes = std::set<EventTypeName, ByName>;

std::vector<EventTypeName> NamesOf(const CosNotification::EventTypeSeq& types);
/// The caller owns the sequence.
CosNotification::EventTypeSeq* SequenceOf(const std::vector<EventTypeName>& types);

/// A set of event types, in the order in which they came. Who offers or subscribes to certain types after all
/// types means these from then on. Not thread-safe.
class TypeSet {
  public:
    /// As many may be named in one place; who wants more is refused.
    static constexpr std::size_t kMost = 10000;

    struct Change {
        std::vector<EventTypeName> added;
        std::vector<EventTypeName> removed;
        bool Empty() const { return added.empty() && removed.empty(); }
    };

    TypeSet() = default;
    explicit TypeSet(std::vector<EventTypeName> types) : m_types(std::move(types)) {}
    /// What a proxy is subscribed to that has never been told otherwise.
    static TypeSet All() { return TypeSet(std::vector<EventTypeName>{{"*", "*"}}); }

    /// Returns what is different afterwards. Takes logarithmic time for each type.
    Change Apply(const std::vector<EventTypeName>& added, const std::vector<EventTypeName>& removed);

    bool Matches(const CosNotification::StructuredEvent& event) const;
    const std::vector<EventTypeName>& Types() const { return m_types; }

  private:
    void Remove(const std::vector<EventTypeName>& types);
    void Add(const std::vector<EventTypeName>& types);
    template <class Predicate>
    void Erase(Predicate unwanted);

    std::vector<EventTypeName> m_types;
};

}  // namespace qv_notify
