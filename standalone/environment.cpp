#include "platform/environment.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "standalone/config_store.h"

namespace NS_BUNDLEMGR1 {
namespace {

std::string WithoutSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

/// The environment variable when it is set and isn't empty, otherwise the configured path.
std::string Place(const char* variable, const char* setting) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') {
        return WithoutSlashes(value);
    }
    return WithoutSlashes(qv_standalone::ConfigStore::Instance().PlatformPath(setting));
}

}  // namespace

std::string GetXDENEnvironment() {
    return Place("QV_ENV_ROOT", "env_root");
}

std::string GetCfgDirPath() {
    return Place("QV_CFG_DIR", "cfg_dir");
}

std::string GetNBILogPath() {
    const std::string configured = Place("QV_LOG_DIR", "log_dir");
    std::error_code ignored;  // whoever writes there reports that it can't
    const auto directory = std::filesystem::absolute(configured.empty() ? "log" : configured, ignored);
    std::filesystem::create_directories(directory, ignored);
    return directory.string();
}

}  // namespace NS_BUNDLEMGR1
