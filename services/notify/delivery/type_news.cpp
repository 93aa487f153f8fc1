#include "services/notify/delivery/type_news.h"

#include <algorithm>

namespace qv_notify {

void TypeNews::Add(const CosNotification::EventTypeSeq& added, const CosNotification::EventTypeSeq& removed) {
    Add(removed, Change::kRemoved);
    Add(added, Change::kAdded);
}

void TypeNews::Add(const TypeNews& later) {
    for (const auto& [name, change] : later.m_changes) {
        Add(name, change);
    }
}

void TypeNews::Add(const CosNotification::EventTypeSeq& types, Change change) {
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        Add({types[i].domain_name.in(), types[i].type_name.in()}, change);
    }
}

void TypeNews::Add(const Name& name, Change change) {
    const auto [entry, is_new] = m_changes.emplace(name, change);
    if (!is_new && entry->second != change) {
        m_changes.erase(entry);  // the client knows it as it is now again
    }
}

CosNotification::EventTypeSeq TypeNews::Those(Change change) const {
    const auto wanted = [change](const auto& entry) { return entry.second == change; };
    CosNotification::EventTypeSeq types;
    types.length(static_cast<CORBA::ULong>(std::count_if(m_changes.begin(), m_changes.end(), wanted)));
    CORBA::ULong next = 0;
    for (const auto& entry : m_changes) {
        if (wanted(entry)) {
            types[next].domain_name = entry.first.first.c_str();
            types[next].type_name = entry.first.second.c_str();
            ++next;
        }
    }
    return types;
}

}  // namespace qv_notify
