#pragma once

#include <tao/corba.h>

#include <cstdint>

#include "logging/cdr_reader.h"

namespace NS_CORBA {

/// Reads the next discriminator of a union, be it a value's or a label's in a TypeCode, as a number that
/// tells one from another. Raises CORBA::BAD_TYPECODE for a kind that can't be one, and CORBA::MARSHAL where
/// the bytes end before it does.
std::int64_t ReadDiscriminator(CdrReader& reader, CORBA::TCKind kind);

}  // namespace NS_CORBA
