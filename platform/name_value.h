#pragma once

#include <string>
#include <vector>

#include "platform/export.h"

namespace NS_BUNDLEMGR1 {

/// One entry of the configuration store: a pair of strings.
struct QV_API NameValueStru {
    std::string name;   ///< the key
    std::string value;  ///< as configured; numbers are texts, too
};

/// Looks `key` up in `items` (exact, case-sensitive; the first entry of that name counts).
/// Returns true and sets `value` when the key exists, else false with `value` untouched.
/// Thread safety: reentrant; the caller owns all three arguments.
QV_API bool GetValByKey(std::string& value, const std::string& key, const std::vector<NameValueStru>& items);

}  // namespace NS_BUNDLEMGR1
