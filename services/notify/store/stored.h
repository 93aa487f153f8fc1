#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "services/notify/properties/service_time.h"

namespace qv_notify {

/// An object as the store has it. A path names the objects around it: "c1", "c1/ca2", "c1/ca2/p7", "c1/f3".
struct StoredObject {
    std::string path;
    std::string description;
};

/// For which consumers an event turned out to be.
struct Dispatched {
    std::int64_t sequence = 0;
    std::vector<std::string> consumers;  ///< paths of proxies
};

/// An event that is still to be dispatched, or to be delivered to the consumers named.
struct StoredEvent {
    std::int64_t sequence = 0;
    std::string channel;
    std::string supplier;  ///< empty: the proxy has gone
    std::string octets;
    Time arrived;  ///< to the microsecond
    bool dispatched = false;
    std::vector<std::string> consumers;  ///< those that don't have it yet, sorted
};

/// What is remembered of an event that a supplier has added.
struct EventDigest {
    std::int64_t sequence = 0;
    std::string digest;  ///< DigestOf its octets
};

/// A digest such that different octets have different ones.
std::string DigestOf(const std::string& octets);

}  // namespace qv_notify
