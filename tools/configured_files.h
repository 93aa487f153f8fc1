#pragma once

#include <string>

namespace qv_tools {

/// Where the configuration of this environment has the agent's audit, as the agent itself finds it. Makes
/// nothing. Throws std::runtime_error with a sentence when there is no configuration or it can't be used.
std::string ConfiguredAuditFile();

/// As ConfiguredAuditFile, for the spans of the agent's call chain.
std::string ConfiguredSpanFile();

}  // namespace qv_tools
