#pragma once

#include <json/forwards.h>

#include <string>

namespace qv_standalone {

/// Appends the value as compact JSON, byte for byte as jsoncpp's compact writer has it, which takes several
/// times as long. False, with `line` in whatever state, when the value is nested too deep. Reentrant.
bool AppendCompact(const Json::Value& value, std::string& line);

}  // namespace qv_standalone
