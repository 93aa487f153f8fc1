// The library that has omniNames speak SSL.
#pragma once

#include <string>

namespace qv_naming {

/// Its path: beside this program's libraries, or what $QV_NAMING_SSL_LIBRARY says. Throws StartError when it
/// is not there.
std::string FindSslLibrary();

}  // namespace qv_naming
