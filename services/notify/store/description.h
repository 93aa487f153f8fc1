#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "services/notify/properties/event_type_name.h"
#include "services/notify/properties/property_values.h"
#include "services/notify/store/store_error.h"

namespace qv_notify {

/// A filter in use by an admin or a proxy.
struct FilterLinkState {
    std::int32_t local_id = 0;              ///< the FilterID that the admin or proxy gave it
    std::optional<std::int32_t> filter_id;  ///< FilterState::id of a filter of this service's
    std::string ior;                        ///< of somebody else's filter; only without a filter_id
};

struct ChannelState {
    std::int32_t id = 0;
    PropertyValues qos;
    PropertyValues admin;
};

struct AdminState {
    std::int32_t id = 0;
    bool for_consumers = false;
    bool and_operator = false;
    PropertyValues qos;
    std::vector<EventTypeName> types;  ///< subscribed by consumers, offered by suppliers
    std::vector<FilterLinkState> filters;
    std::int32_t next_filter_id = 0;
};

enum class ClientKind { kAny, kStructured, kSequence };

struct ProxyState {
    std::int32_t id = 0;
    bool supplier = false;  ///< it is a proxy supplier: a consumer is connected to it
    ClientKind client_type = ClientKind::kStructured;
    std::string peer;  ///< the IOR of what is connected; empty: nothing
    bool suspended = false;
    PropertyValues qos;
    std::vector<EventTypeName> types;
    std::vector<FilterLinkState> filters;
    std::int32_t next_filter_id = 0;
};

struct ConstraintState {
    std::int32_t id = 0;
    std::vector<EventTypeName> types;
    std::string text;
};

struct FilterState {
    std::int32_t id = 0;
    std::string grammar;
    std::vector<ConstraintState> constraints;
    std::int32_t next_constraint_id = 0;
};

bool operator==(const FilterLinkState& left, const FilterLinkState& right);
bool operator==(const ChannelState& left, const ChannelState& right);
bool operator==(const AdminState& left, const AdminState& right);
bool operator==(const ProxyState& left, const ProxyState& right);
bool operator==(const ConstraintState& left, const ConstraintState& right);
bool operator==(const FilterState& left, const FilterState& right);

/// What the store keeps of an object: JSON with the kind of the object and the version of its form. Strings
/// are octets; those that are no UTF-8 come back as they were.
std::string Text(const ChannelState& state);
std::string Text(const AdminState& state);
std::string Text(const ProxyState& state);
std::string Text(const FilterState& state);

/// The reverse of Text. Throw StoreError for anything that isn't such a text, of this kind, and of a version
/// that is known; members that aren't known are skipped.
ChannelState ReadChannel(const std::string& text);
AdminState ReadAdmin(const std::string& text);
ProxyState ReadProxy(const std::string& text);
FilterState ReadFilter(const std::string& text);

}  // namespace qv_notify
