#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "services/notify/etcl/place.h"

namespace qv_notify::etcl {

// The structures of CosNotification as components. They are the ones that events are handed over in, so they
// are read where they stand.

constexpr std::size_t kNoPosition = ~std::size_t{0};

/// The position of a structure's member; kNoPosition where there is none of that name.
std::size_t PositionOf(const Place::Node& node, std::string_view member);

/// The member at a position. A member that is an Any is given in `any` instead, and nothing when there is no
/// such member.
Place::Node PartAt(const Place::Node& node, std::uint64_t position, const CORBA::Any*& any);

/// Both empty for what has no type of its own.
TypeNames TypeNamesOf(const Place::Node& node);

/// A typed event.
Place::Properties PropertyList(const CosNotification::PropertySeq& properties);

}  // namespace qv_notify::etcl
