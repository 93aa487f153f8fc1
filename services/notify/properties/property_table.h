#pragma once

#include <cstdint>
#include <vector>

#include "services/notify/properties/property_values.h"
#include "services/notify/properties/qos.h"

namespace qv_notify {

/// From the lowest to the highest value, both included. Both are of one type.
struct Range {
    PropertyValue low;
    PropertyValue high;
};

/// A QoS property as the standard has it, and what of it this service does.
struct KnownProperty {
    const char* name;
    unsigned levels;         ///< LevelBit of each level that it can be set at
    PropertyValue initial;   ///< of a new channel; its type is the type of the property
    Range legal;             ///< the values that it has
    Range supported;         ///< those of them that this service knows how to follow
    bool is_moment = false;  ///< an UtcT, which is held as its time; there is no range
    bool usable = true;      ///< false: this service doesn't do that at all
};

constexpr unsigned LevelBit(QosLevel level) {
    return 1U << static_cast<unsigned>(level);
}

/// All properties that are known.
const std::vector<KnownProperty>& QosTable();

/// Null: there is no such property.
const KnownProperty* FindQos(const std::string& name);

}  // namespace qv_notify
