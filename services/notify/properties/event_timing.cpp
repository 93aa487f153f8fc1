#include "services/notify/properties/event_timing.h"

#include "services/notify/etcl/standard_time.h"
#include "services/notify/properties/property_check.h"

namespace qv_notify {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

// More of them can't be told in nanoseconds.
constexpr auto kMostUnits = static_cast<std::uint64_t>(duration_cast<TimeUnits>(nanoseconds::max()).count());

std::chrono::system_clock::duration ToDuration(std::uint64_t units) {
    return duration_cast<std::chrono::system_clock::duration>(TimeUnits(static_cast<std::int64_t>(units)));
}

/// Nothing when that is never, or beyond what the clock will ever show.
std::optional<Time> After(Time now, std::uint64_t timeout) {
    if (timeout == 0 || timeout > kMostUnits || ToDuration(timeout) > Time::max() - now) {
        return std::nullopt;
    }
    return now + ToDuration(timeout);
}

std::optional<Time> At(std::uint64_t moment) {
    const std::uint64_t units = moment > kSystemEpoch ? moment - kSystemEpoch : 0;
    return units > kMostUnits ? std::nullopt : std::optional<Time>(Time(ToDuration(units)));
}

/// The properties of the header as far as they are sound and of use here. The first of a name counts.
PropertyValues ReadHeader(const CosNotification::OptionalHeaderFields& fields) {
    PropertyValues values;
    for (CORBA::ULong i = 0; i < fields.length(); ++i) {
        const KnownProperty* property = FindQos(fields[i].name.in());
        if (property == nullptr || (property->levels & LevelBit(QosLevel::kEvent)) == 0) {
            continue;
        }
        if (property->is_moment) {
            if (const auto moment = ReadMoment(fields[i].value)) {
                values.emplace(property->name, *moment);
            }
            continue;
        }
        const auto value = ReadValue(fields[i].value, property->initial);
        if (value && Contains(property->legal, *value)) {
            values.emplace(property->name, *value);
        }
    }
    return values;
}

}  // namespace

EventTiming ReadEventTiming(const CosNotification::StructuredEvent& event, const PropertyValues& inherited,
                            Time now) {
    const PropertyValues header = ReadHeader(event.header.variable_header);
    const auto holding = [&](const char* name, auto otherwise) {
        return ValueOf(header, name, ValueOf(inherited, name, otherwise));
    };
    EventTiming timing;
    timing.priority = holding(CosNotification::Priority, std::int16_t{CosNotification::DefaultPriority});
    timing.persistent_wanted =
        holding(CosNotification::EventReliability, std::int16_t{CosNotification::BestEffort}) ==
        CosNotification::Persistent;
    timing.expires = After(now, holding(CosNotification::Timeout, std::uint64_t{0}));
    const auto stop = header.find(CosNotification::StopTime);
    if (stop != header.end() && ValueOf(inherited, CosNotification::StopTimeSupported, true)) {
        const std::optional<Time> stops = At(std::get<std::uint64_t>(stop->second));
        if (stops && (!timing.expires || *stops < *timing.expires)) {
            timing.expires = stops;
        }
    }
    return timing;
}

}  // namespace qv_notify
