// What suppliers offer and what consumers have subscribed to, over a whole channel.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "services/notify/channel/type_set.h"

namespace qv_notify {

/// The types that several objects name, and how the whole of them changes. Set and Remove take logarithmic
/// time for each type that the object names, or named. Not thread-safe.
class TypeExchange {
  public:
    /// The object names these types now, instead of what it named before.
    TypeSet::Change Set(const std::string& path, const std::vector<EventTypeName>& types);
    TypeSet::Change Remove(const std::string& path);
    /// Each type once.
    std::vector<EventTypeName> All() const;

  private:
    std::map<std::string, std::vector<EventTypeName>> m_types;
    std::map<EventTypeName, std::size_t, ByName> m_named;  // so often
};

}  // namespace qv_notify
