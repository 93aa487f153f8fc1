#pragma once

#include <string>

namespace qv_secrets {

/// Reads one line from standard input. At a terminal it asks with `prompt` on standard error and shows
/// nothing of what is typed; a signal that ends or stops the program finds the terminal as it was. Raises
/// std::runtime_error when there is no line. For one thread alone.
std::string ReadSecretLine(const std::string& prompt);

}  // namespace qv_secrets
