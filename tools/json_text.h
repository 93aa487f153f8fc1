#pragma once

#include <json/value.h>

#include <iosfwd>

namespace qv_tools {

/// The value as people read it, in UTF-8, with a line end behind it.
void PrintJson(std::ostream& out, const Json::Value& value);

}  // namespace qv_tools
