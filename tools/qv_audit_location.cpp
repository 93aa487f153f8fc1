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

}  // namespace

std::string ConfiguredAuditFile() {
    const std::string path = qv_standalone::ConfigFilePath();
    if (path.empty() && std::getenv("QV_LOG_DIR") == nullptr) {
        throw std::runtime_error(
            "which audit? Name its file, or set QV_AGENT_CONFIG to the agent's configuration file");
    }
    qv_standalone::SettingsFile file;
    if (!path.empty()) {
        file = qv_standalone::ReadSettingsFile(path);
        if (!file.usable) {
            throw std::runtime_error(file.findings.empty() ? path + " can't be used"
                                                           : FindingText(path, file.findings.front()));
        }
    }
    const fs::path audit = PathSetting(file, "audit_file");
    return (audit.empty() ? LogDirectory(file) / "audit.db" : audit).string();
}

}  // namespace qv_tools
