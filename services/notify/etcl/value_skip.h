#pragma once

#include "orb/cdr_reader.h"
#include "services/notify/etcl/type_table.h"

namespace qv_notify::etcl {

using qv_orb::CdrReader;

/// The fixed size in bytes of values of a basic kind, which is its alignment as well but for a long double,
/// which is aligned to 8; 0 for every other kind.
std::size_t FixedSize(CORBA::TCKind kind);

/// Moves `reader` behind the value of that type. Raises CORBA::MARSHAL when the bytes don't hold one,
/// CORBA::IMP_LIMIT when it is nested too deep and CORBA::NO_IMPLEMENT for value types, whose end only their
/// own code finds.
void SkipValue(const TypeTable& table, TypeTable::Index type, CdrReader& reader);

/// Moves `reader` over `count` values of that type.
void SkipValues(const TypeTable& table, TypeTable::Index type, std::uint32_t count, CdrReader& reader);

/// The member that a discriminator makes active; null when it is none.
const TypeTable::Member* ActiveMember(const TypeTable::Type& type, std::int64_t discriminator);

}  // namespace qv_notify::etcl
