#include "standalone/config_file_path.h"

#include <cstdlib>
#include <filesystem>

namespace qv_standalone {
namespace {

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

std::string ConfigFilePath() {
    std::string file = Environment("QV_AGENT_CONFIG");
    if (!file.empty()) {
        return file;
    }
    const std::string directory = Environment("QV_CFG_DIR");
    return directory.empty() ? "" : (std::filesystem::path(directory) / "corba_agent.toml").string();
}

}  // namespace qv_standalone
