#pragma once

#include <string>

#include "tools/ssl/finding.h"

namespace qv_tools {

/// How much others may know of a file.
enum class Secrecy { kSecret, kPublic };

/// Looks whether the file is there and can be read; if so true, otherwise an error is added under `check`.
bool CheckReadable(const std::string& check, const std::string& file, Findings& findings);

/// Looks who else may change the file, or read it when it is secret.
void CheckPermissions(const std::string& file, Secrecy secrecy, Findings& findings);

}  // namespace qv_tools
