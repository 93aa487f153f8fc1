#include "services/notify/model/type_exchange.h"

#include <algorithm>

namespace qv_notify {

namespace {

bool Holds(const std::vector<EventTypeName>& types, const EventTypeName& type) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace

TypeSet::Change TypeExchange::Set(const std::string& path, const std::vector<EventTypeName>& types) {
    const std::vector<EventTypeName> before = All();
    m_types[path] = types;
    return ChangeFrom(before);
}

TypeSet::Change TypeExchange::Remove(const std::string& path) {
    const std::vector<EventTypeName> before = All();
    m_types.erase(path);
    return ChangeFrom(before);
}

std::vector<EventTypeName> TypeExchange::All() const {
    std::vector<EventTypeName> all;
    for (const auto& [path, types] : m_types) {
        for (const EventTypeName& type : types) {
            if (!Holds(all, type)) {
                all.push_back(type);
            }
        }
    }
    return all;
}

TypeSet::Change TypeExchange::ChangeFrom(const std::vector<EventTypeName>& before) const {
    const std::vector<EventTypeName> now = All();
    TypeSet::Change change;
    std::copy_if(now.begin(), now.end(), std::back_inserter(change.added),
                 [&](const EventTypeName& type) { return !Holds(before, type); });
    std::copy_if(before.begin(), before.end(), std::back_inserter(change.removed),
                 [&](const EventTypeName& type) { return !Holds(now, type); });
    return change;
}

}  // namespace qv_notify
