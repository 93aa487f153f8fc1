#include "services/notify/channel/type_set.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace qv_notify {

namespace {

bool StandsForAll(const std::string& part) {
    return part.empty() || part == "*" || part == "%ALL";
}

bool StandsForAll(const EventTypeName& type) {
    return StandsForAll(type.domain) && StandsForAll(type.type);
}

bool AnyStandsForAll(const std::vector<EventTypeName>& types) {
    return std::any_of(types.begin(), types.end(),
                       [](const EventTypeName& type) { return StandsForAll(type); });
}

std::vector<EventTypeName> Without(const std::vector<EventTypeName>& types,
                                   const std::vector<EventTypeName>& others) {
    const SortedTypes unwanted(others.begin(), others.end());
    std::vector<EventTypeName> left;
    std::copy_if(types.begin(), types.end(), std::back_inserter(left),
                 [&](const EventTypeName& type) { return unwanted.count(type) == 0; });
    return left;
}

// Without backtracking over more than the last "*", so that no pattern takes long.
bool Fits(const char* pattern, const char* text) {
    const char* star = nullptr;
    const char* retry = nullptr;
    while (*text != '\0') {
        if (*pattern == '*') {
            star = ++pattern;
            retry = text;
        } else if (*pattern == *text) {
            ++pattern;
            ++text;
        } else if (star != nullptr) {
            pattern = star;
            text = ++retry;
        } else {
            return false;
        }
    }
    while (*pattern == '*') {
        ++pattern;
    }
    return *pattern == '\0';
}

}  // namespace

bool Means(const EventTypeName& pattern, const char* domain, const char* type) {
    return (StandsForAll(pattern.domain) || Fits(pattern.domain.c_str(), domain)) &&
           (StandsForAll(pattern.type) || Fits(pattern.type.c_str(), type));
}

std::vector<EventTypeName> NamesOf(const CosNotification::EventTypeSeq& types) {
    std::vector<EventTypeName> names;
    names.reserve(types.length());
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        names.push_back({types[i].domain_name.in(), types[i].type_name.in()});
    }
    return names;
}

CosNotification::EventTypeSeq* SequenceOf(const std::vector<EventTypeName>& types) {
    CosNotification::EventTypeSeq_var sequence = new CosNotification::EventTypeSeq;
    sequence->length(static_cast<CORBA::ULong>(types.size()));
    CORBA::ULong next = 0;
    for (const EventTypeName& type : types) {
        sequence[next].domain_name = type.domain.c_str();
        sequence[next].type_name = type.type.c_str();
        ++next;
    }
    return sequence._retn();
}

TypeSet::Change TypeSet::Apply(const std::vector<EventTypeName>& added,
                               const std::vector<EventTypeName>& removed) {
    const std::vector<EventTypeName> before = m_types;
    Remove(removed);
    Add(added);
    return {Without(m_types, before), Without(before, m_types)};
}

void TypeSet::Remove(const std::vector<EventTypeName>& types) {
    const SortedTypes unwanted(types.begin(), types.end());
    const bool all_unwanted = AnyStandsForAll(types);
    Erase([&](const EventTypeName& type) {
        return unwanted.count(type) > 0 || (all_unwanted && StandsForAll(type));
    });
}

void TypeSet::Add(const std::vector<EventTypeName>& types) {
    if (AnyStandsForAll(types)) {
        m_types = All().m_types;
        return;
    }
    if (types.empty()) {
        return;
    }
    Erase([](const EventTypeName& type) { return StandsForAll(type); });
    SortedTypes held(m_types.begin(), m_types.end());
    std::copy_if(types.begin(), types.end(), std::back_inserter(m_types),
                 [&](const EventTypeName& type) { return held.insert(type).second; });
}

template <class Predicate>
void TypeSet::Erase(Predicate unwanted) {
    m_types.erase(std::remove_if(m_types.begin(), m_types.end(), unwanted), m_types.end());
}

bool TypeSet::Matches(const CosNotification::StructuredEvent& event) const {
    const CosNotification::EventType& type = event.header.fixed_header.event_type;
    return std::any_of(m_types.begin(), m_types.end(), [&](const EventTypeName& pattern) {
        return Means(pattern, type.domain_name.in(), type.type_name.in());
    });
}

}  // namespace qv_notify
