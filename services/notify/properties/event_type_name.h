#pragma once

#include <string>

namespace qv_notify {

/// A type of events; "*" or nothing in a part stands for all, as in the subscriptions themselves.
struct EventTypeName {
    std::string domain;
    std::string type;
};

inline bool operator==(const EventTypeName& left, const EventTypeName& right) {
    return left.domain == right.domain && left.type == right.type;
}

}  // namespace qv_notify
