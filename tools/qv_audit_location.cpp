#include "tools/qv_audit_location.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "standalone/config_file_path.h"
#include "standalone/settings_file.h"

namespace qv_tools {
namespace {

namespace fs = std::filesystem;

/// A path of the file; a relative one counts from the file's directory. Empty when the file has none.
fs::path PathSetting(const qv_standalone::SettingsFile& file, const char* key) {
    const auto found = file.platform.find(key);
    if (found == file.platform.end() || found->second.empty()) {
        return {};
    }
    return (fs::absolute(file.path).parent_path() / found->second).lexically_normal();
}

fs::path LogDirectory(const qv_standalone::SettingsFile& file) {
    const char* const variable = std::getenv("QV_LOG_DIR");
    if (variable != nullptr && *variable != '\0') {
        return variable;
    }
    const fs::path configured = PathSetting(file, "log_dir");
    return configured.empty() ? "log" : configured;
}

/// @param which asks for what is missing when nothing is configured
qv_standalone::SettingsFile Configuration(const std::string& which) {
    const std::string path = qv_standalone::ConfigFilePath();
    if (path.empty() && std::getenv("QV_LOG_DIR") == nullptr) {
        throw std::runtime_error(which +
                                 "? Name its file, or set QV_AGENT_CONFIG to the agent's configuration file");
    }
    qv_standalone::SettingsFile file;
    if (!path.empty()) {
        file = qv_standalone::ReadSettingsFile(path);
        if (!file.usable) {
            throw std::runtime_error(file.findings.empty() ? path + " can't be used"
                                                           : FindingText(path, file.findings.front()));
        }
    }
    return file;
}

}  // namespace

std::string ConfiguredAuditFile() {
    const qv_standalone::SettingsFile file = Configuration("which audit");
    const fs::path audit = PathSetting(file, "audit_file");
    return (audit.empty() ? LogDirectory(file) / "audit.db" : audit).string();
}

std::string ConfiguredSpanFile() {
    return (LogDirectory(Configuration("which call chain")) / "callchain.jsonl").string();
}

}  // namespace qv_tools
