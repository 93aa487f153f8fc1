#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/name_value.h"

namespace qv_standalone {

/// Something wrong in a configuration file.
struct Finding {
    int line = 0;         ///< line in the file, from 1; 0 when it concerns no line
    std::string key;      ///< the key concerned; may be empty
    std::string problem;  ///< what is wrong
    std::string taken;    ///< what is in force instead
};

/// What a configuration file says.
struct SettingsFile {
    std::string path;
    bool usable = false;            ///< false: can't be read, or isn't TOML; all below but findings is empty
    std::vector<Finding> findings;  ///< in the order of the file
    std::vector<NS_BUNDLEMGR1::NameValueStru>
        items;  ///< the agent's keys that the file holds, in the table's order
    std::map<std::string, std::string> platform;  ///< the platform's keys that the file holds
    std::vector<std::string> oss_addresses;       ///< the platform's "oss_addresses"
    std::map<std::string, int> lines;             ///< the line of each key that the file holds
};

/// Reads and checks a file. Never throws for what the file holds; a value that can't be used is left out and
/// leads to a finding. Reentrant.
SettingsFile ReadSettingsFile(const std::string& path);

/// As ReadSettingsFile, with the file's contents given; `path` is used in findings alone.
SettingsFile ParseSettings(const std::string& contents, const std::string& path);

/// "path:line: key: problem; taken".
std::string FindingText(const std::string& path, const Finding& finding);

}  // namespace qv_standalone
