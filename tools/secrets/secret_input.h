#pragma once

#include <string>

namespace qv_secrets {

/// Reads one line from standard input. At a terminal it asks with `prompt` on standard error and shows
/// nothing of what is typed. Raises std::runtime_error when there is no line.
std::string ReadSecretLine(const std::string& prompt);

}  // namespace qv_secrets
