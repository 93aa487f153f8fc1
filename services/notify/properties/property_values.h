#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace qv_notify {

/// The value of a property: a boolean, a short, a long, or a TimeT (units of 100 ns).
using PropertyValue = std::variant<bool, std::int16_t, std::int32_t, std::uint64_t>;
/// Properties by their names, as CosNotification spells them.
using PropertyValues = std::map<std::string, PropertyValue, std::less<>>;

/// The value of a property, or `otherwise` when it isn't there or of another type.
template <class T>
T ValueOf(const PropertyValues& values, std::string_view name, T otherwise) {
    const auto found = values.find(name);
    const T* value = found == values.end() ? nullptr : std::get_if<T>(&found->second);
    return value == nullptr ? otherwise : *value;
}

/// What holds for an object inside another: its own settings, and those around it for what it doesn't set.
/// `Inherit(Inherit(channel, admin), proxy)` is what holds for a proxy.
PropertyValues Inherit(const PropertyValues& around, const PropertyValues& own);

}  // namespace qv_notify
