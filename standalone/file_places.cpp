#include "standalone/file_places.h"

#include <cstdlib>
#include <filesystem>

namespace qv_standalone {
namespace {

std::string WithoutSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

}  // namespace

std::string PathIn(const SettingsFile& file, const std::string& key) {
    const auto found = file.platform.find(key);
    const std::filesystem::path path = found == file.platform.end() ? "" : found->second;
    if (path.empty() || path.is_absolute()) {
        return path.string();
    }
    return (std::filesystem::absolute(file.path).parent_path() / path).lexically_normal().string();
}

std::string Place(const char* variable, const std::function<std::string()>& configured) {
    const char* const value = std::getenv(variable);
    return WithoutSlashes(value != nullptr && *value != '\0' ? value : configured());
}

std::string LogDirectory(const std::function<std::string()>& configured) {
    const std::string place = Place("QV_LOG_DIR", configured);
    return place.empty() ? "log" : place;
}

}  // namespace qv_standalone
