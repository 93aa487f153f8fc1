// What a client has still to be told of types that others offer or subscribe to.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <map>
#include <string>
#include <utility>

namespace qv_notify {

/// Several changes as one, so that no more waits for a client than there are types: one that came and went
/// meanwhile is left out. Not thread-safe.
class TypeNews {
  public:
    void Add(const CosNotification::EventTypeSeq& added, const CosNotification::EventTypeSeq& removed);
    /// What happened after what is in here.
    void Add(const TypeNews& later);
    bool Empty() const { return m_changes.empty(); }
    void Clear() { m_changes.clear(); }

    /// Sorted by name.
    CosNotification::EventTypeSeq Added() const { return Those(Change::kAdded); }
    CosNotification::EventTypeSeq Removed() const { return Those(Change::kRemoved); }

  private:
    enum class Change { kAdded, kRemoved };
    using Name = std::pair<std::string, std::string>;  // domain and type

    void Add(const CosNotification::EventTypeSeq& types, Change change);
    void Add(const Name& name, Change change);
    CosNotification::EventTypeSeq Those(Change change) const;

    std::map<Name, Change> m_changes;
};

}  // namespace qv_notify
