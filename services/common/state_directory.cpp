#include "services/common/state_directory.h"

#include <cstdlib>

#include "services/common/start_error.h"

namespace qv_service {
namespace {

namespace fs = std::filesystem;

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

fs::path Base(const StateDirectory& service, const std::string& ior_file) {
    if (const std::string base = Environment(service.variable); !base.empty()) {
        return base;
    }
    if (!ior_file.empty()) {
        return fs::absolute(ior_file).parent_path();
    }
    if (const std::string state = Environment("XDG_STATE_HOME"); !state.empty()) {
        return fs::path(state) / service.folder;
    }
    if (const std::string home = Environment("HOME"); !home.empty()) {
        return fs::path(home) / ".local/state" / service.folder;
    }
    throw StartError(std::string("There is no place for ") + service.contents +
                         ": give a directory with \"-u\" or in " + service.variable + ".",
                     kExitUsage);
}

}  // namespace

fs::path ChooseStateDirectory(const StateDirectory& service, const std::string& given,
                              const std::string& ior_file, const std::string& instance) {
    const fs::path directory = given.empty() ? Base(service, ior_file) / instance : fs::path(given);
    return fs::absolute(directory).lexically_normal();
}

}  // namespace qv_service
