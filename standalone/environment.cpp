#include "platform/environment.h"

#include <filesystem>
#include <system_error>

#include "standalone/config_store.h"
#include "standalone/file_places.h"

namespace NS_BUNDLEMGR1 {
namespace {

auto Configured(const char* setting) {
    return [setting] { return qv_standalone::ConfigStore::Instance().PlatformPath(setting); };
}

}  // namespace

std::string GetXDENEnvironment() {
    return qv_standalone::Place("QV_ENV_ROOT", Configured("env_root"));
}

std::string GetCfgDirPath() {
    return qv_standalone::Place("QV_CFG_DIR", Configured("cfg_dir"));
}

std::string GetNBILogPath() {
    const std::string place = qv_standalone::LogDirectory(Configured("log_dir"));
    std::error_code ignored;  // whoever writes there reports that it can't
    const auto directory = std::filesystem::absolute(place, ignored);
    std::filesystem::create_directories(directory, ignored);
    return directory.string();
}

}  // namespace NS_BUNDLEMGR1
