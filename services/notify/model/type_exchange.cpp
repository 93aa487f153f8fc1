#include "services/notify/model/type_exchange.h"

#include <algorithm>
#include <iterator>

namespace qv_notify {

TypeSet::Change TypeExchange::Set(const std::string& path, const std::vector<EventTypeName>& types) {
    TypeSet::Change change;
    for (const EventTypeName& type : types) {
        if (++m_named[type] == 1) {
            change.added.push_back(type);
        }
    }
    std::vector<EventTypeName>& own = m_types[path];
    for (const EventTypeName& type : own) {
        const auto named = m_named.find(type);
        if (--named->second == 0) {
            m_named.erase(named);
            change.removed.push_back(type);
        }
    }
    own = types;
    return change;
}

TypeSet::Change TypeExchange::Remove(const std::string& path) {
    TypeSet::Change change = Set(path, {});
    m_types.erase(path);
    return change;
}

std::vector<EventTypeName> TypeExchange::All() const {
    SortedTypes seen;
    std::vector<EventTypeName> all;
    for (const auto& [path, types] : m_types) {
        std::copy_if(types.begin(), types.end(), std::back_inserter(all),
                     [&](const EventTypeName& type) { return seen.insert(type).second; });
    }
    return all;
}

}  // namespace qv_notify
