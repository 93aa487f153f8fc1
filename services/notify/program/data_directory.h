// Where persistent channels live between two runs of the service.
#pragma once

#include <filesystem>

#include "services/notify/program/command_line.h"

namespace qv_notify {

/// The directory for the store: "-u" as given; otherwise notify-PORT below the first of $QV_NOTIFY_DATA, the
/// directory of "-IORoutput", $XDG_STATE_HOME/qv_notify and $HOME/.local/state/qv_notify. Always an absolute
/// path. Throws StartError when none of them is set.
std::filesystem::path ChooseDataDirectory(const Settings& settings);

/// The file of the store; makes the directory (mode 0700) if need be. Throws StartError.
std::filesystem::path PrepareStoreFile(const std::filesystem::path& directory);

}  // namespace qv_notify
