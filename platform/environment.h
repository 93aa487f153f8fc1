#pragma once

#include <string>

#include "platform/export.h"

/// @file
/// Where the installation lies. Thread safety: reentrant, as long as nobody changes the environment
/// meanwhile.
namespace NS_BUNDLEMGR1 {

/// The root of the installation, without a slash at its end; empty when it isn't set.
QV_API std::string GetXDENEnvironment();

/// The directory of the configuration files; empty when it isn't set.
QV_API std::string GetCfgDirPath();

/// The directory for the agent's logs and statistics. It exists and can be written to when this returns,
/// unless the machine doesn't permit it.
QV_API std::string GetNBILogPath();

}  // namespace NS_BUNDLEMGR1
