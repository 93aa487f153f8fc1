#pragma once

#include <string>

namespace qv_standalone {

/// The configuration file of this process: the environment variable QV_AGENT_CONFIG, otherwise
/// corba_agent.toml in the directory that QV_CFG_DIR names; empty when neither is set.
std::string ConfigFilePath();

}  // namespace qv_standalone
