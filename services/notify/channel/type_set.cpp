#include "services/notify/channel/type_set.h"

#include <algorithm>
#include <cstring>

namespace qv_notify {

namespace {

bool StandsForAll(const std::string& part) {
    return part.empty() || part == "*" || part == "%ALL";
}

bool StandsForAll(const EventTypeName& type) {
    return StandsForAll(type.domain) && StandsForAll(type.type);
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
    const auto erase = [this](auto&& unwanted) {
        m_types.erase(std::remove_if(m_types.begin(), m_types.end(), unwanted), m_types.end());
    };
    erase([&](const EventTypeName& type) {
        return std::find(removed.begin(), removed.end(), type) != removed.end() ||
               (StandsForAll(type) &&
                std::any_of(removed.begin(), removed.end(),
                            [](const EventTypeName& one) { return StandsForAll(one); }));
    });
    if (std::any_of(added.begin(), added.end(),
                    [](const EventTypeName& type) { return StandsForAll(type); })) {
        m_types = All().m_types;
    } else if (!added.empty()) {
        erase([](const EventTypeName& type) { return StandsForAll(type); });
        for (const EventTypeName& type : added) {
            if (!Holds(type)) {
                m_types.push_back(type);
            }
        }
    }
    Change change;
    for (const EventTypeName& type : m_types) {
        if (std::find(before.begin(), before.end(), type) == before.end()) {
            change.added.push_back(type);
        }
    }
    for (const EventTypeName& type : before) {
        if (!Holds(type)) {
            change.removed.push_back(type);
        }
    }
    return change;
}

bool TypeSet::Holds(const EventTypeName& type) const {
    return std::find(m_types.begin(), m_types.end(), type) != m_types.end();
}

bool TypeSet::Matches(const CosNotification::StructuredEvent& event) const {
    const CosNotification::EventType& type = event.header.fixed_header.event_type;
    return std::any_of(m_types.begin(), m_types.end(), [&](const EventTypeName& pattern) {
        return Means(pattern, type.domain_name.in(), type.type_name.in());
    });
}

}  // namespace qv_notify
