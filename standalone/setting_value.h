#pragma once

#include <string>

#include "standalone/settings_table.h"

namespace qv_standalone {

/// A value as it stands in the file, reduced to what a setting can be.
struct RawValue {
    enum Kind { kBoolean, kInteger, kString, kOther };
    Kind kind = kOther;
    long long integer = 0;  ///< of kInteger, and 0 or 1 of kBoolean
    std::string text;       ///< of kString
    std::string kind_name;  ///< for messages, as "a fractional number"
};

/// A value as the store delivers it, or what is wrong with it.
struct Converted {
    std::string value;
    std::string problem;  ///< empty when the value is good
};

/// Converts a value for `setting` into the text that is delivered. A flag is delivered as "1" or "0"; a
/// number may stand in quotes. Reentrant.
Converted ConvertValue(const Setting& setting, const RawValue& raw);

/// Empty when `text` can be delivered; else what is wrong with it.
std::string TextProblem(const std::string& text);

}  // namespace qv_standalone
