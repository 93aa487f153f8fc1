#include "services/notify/properties/property_table.h"

#include <algorithm>
#include <limits>

namespace qv_notify {
namespace {

constexpr unsigned kChannels = LevelBit(QosLevel::kChannel);
constexpr unsigned kEvents = LevelBit(QosLevel::kEvent);
constexpr unsigned kObjects = kChannels | LevelBit(QosLevel::kAdmin) | LevelBit(QosLevel::kProxy);

PropertyValue Short(CORBA::Short value) {
    return PropertyValue(std::in_place_type<std::int16_t>, value);
}

PropertyValue Long(std::int32_t value) {
    return PropertyValue(std::in_place_type<std::int32_t>, value);
}

PropertyValue TimeT(std::uint64_t value) {
    return PropertyValue(std::in_place_type<std::uint64_t>, value);
}

PropertyValue Boolean(bool value) {
    return PropertyValue(std::in_place_type<bool>, value);
}

KnownProperty Plain(const char* name, unsigned levels, const PropertyValue& initial, const Range& range) {
    return {name, levels, initial, range, range};
}

KnownProperty Moment(const char* name, bool usable) {
    return {name, kEvents, TimeT(0), {TimeT(0), TimeT(0)}, {TimeT(0), TimeT(0)}, true, usable};
}

std::vector<KnownProperty> MakeTable() {
    namespace Cos = CosNotification;
    const Range reliability = {Short(Cos::BestEffort), Short(Cos::Persistent)};
    const Range count = {Long(0), Long(std::numeric_limits<std::int32_t>::max())};
    const Range interval = {TimeT(0), TimeT(std::numeric_limits<std::uint64_t>::max())};
    const Range either = {Boolean(false), Boolean(true)};
    return {
        Plain(Cos::EventReliability, kChannels | kEvents, Short(Cos::BestEffort), reliability),
        Plain(Cos::ConnectionReliability, kObjects, Short(Cos::BestEffort), reliability),
        Plain(Cos::Priority, kObjects | kEvents, Short(Cos::DefaultPriority),
              {Short(Cos::LowestPriority), Short(Cos::HighestPriority)}),
        Moment(Cos::StartTime, false),
        Moment(Cos::StopTime, true),
        Plain(Cos::Timeout, kObjects | kEvents, TimeT(0), interval),
        Plain(Cos::OrderPolicy, kObjects, Short(Cos::PriorityOrder),
              {Short(Cos::AnyOrder), Short(Cos::DeadlineOrder)}),
        Plain(Cos::DiscardPolicy, kObjects, Short(Cos::AnyOrder),
              {Short(Cos::AnyOrder), Short(Cos::LifoOrder)}),
        // Structured events come one by one.
        {Cos::MaximumBatchSize,
         kObjects,
         Long(1),
         {Long(1), Long(std::numeric_limits<std::int32_t>::max())},
         {Long(1), Long(1)}},
        Plain(Cos::PacingInterval, kObjects, TimeT(0), interval),
        {Cos::StartTimeSupported, kObjects, Boolean(false), either, {Boolean(false), Boolean(false)}},
        Plain(Cos::StopTimeSupported, kObjects, Boolean(true), either),
        Plain(Cos::MaxEventsPerConsumer, kObjects, Long(0), count),
    };
}

}  // namespace

const std::vector<KnownProperty>& QosTable() {
    static const std::vector<KnownProperty> table = MakeTable();
    return table;
}

const KnownProperty* FindQos(const std::string& name) {
    const std::vector<KnownProperty>& table = QosTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&name](const KnownProperty& property) { return property.name == name; });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace qv_notify
