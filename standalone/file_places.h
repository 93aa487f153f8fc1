#pragma once

#include <functional>
#include <string>

#include "standalone/settings_file.h"

/// Where the configuration has the files of the agent. Nothing here makes a file. Reentrant.
namespace qv_standalone {

/// Names of the files that lie beside the logs.
inline constexpr const char* kAuditFileName = "audit.db";
inline constexpr const char* kSpanFileName = "callchain.jsonl";

/// The path that the file has for the key of [platform]; a relative one counts from the file's directory.
/// Empty when the file has none.
std::string PathIn(const SettingsFile& file, const std::string& key);

/// The environment variable when it is set and isn't empty, otherwise what `configured` returns, which is
/// asked only then; without slashes at its end.
std::string Place(const char* variable, const std::function<std::string()>& configured);

/// The directory of the logs: QV_LOG_DIR goes before what is configured, and without either it is "log".
std::string LogDirectory(const std::function<std::string()>& configured);

}  // namespace qv_standalone
