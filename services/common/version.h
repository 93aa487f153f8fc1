#pragma once

#include <string>

namespace qv_service {

/// What `--version` prints: the program's name and the version of the release, with a line end.
std::string VersionText(const std::string& program);

}  // namespace qv_service
