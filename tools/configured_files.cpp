#include "tools/configured_files.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "standalone/config_file_path.h"
#include "standalone/file_places.h"
#include "standalone/settings_file.h"

namespace qv_tools {
namespace {

namespace fs = std::filesystem;

fs::path LogDirectoryOf(const qv_standalone::SettingsFile& file) {
    return qv_standalone::LogDirectory([&file] { return qv_standalone::PathIn(file, "log_dir"); });
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
    const std::string audit = qv_standalone::PathIn(file, "audit_file");
    return audit.empty() ? (LogDirectoryOf(file) / qv_standalone::kAuditFileName).string() : audit;
}

std::string ConfiguredSpanFile() {
    return (LogDirectoryOf(Configuration("which call chain")) / qv_standalone::kSpanFileName).string();
}

}  // namespace qv_tools
