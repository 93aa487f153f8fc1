#pragma once

#include <string>

#include "logging/cdr_reader.h"

namespace NS_CORBA {

/// Appends the object reference that comes next in `reader` in its stringified form, "IOR:" and hex digits
/// (CORBA 3.0, 13.6.10), as object_to_string gives it. `reader` stands behind it afterwards. Raises
/// CORBA::MARSHAL.
void AppendIorText(CdrReader& reader, std::string& out);

/// Moves `reader` behind the object reference that comes next. Raises CORBA::MARSHAL.
void SkipReference(CdrReader& reader);

}  // namespace NS_CORBA
