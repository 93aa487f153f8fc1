#include "services/notify/program/data_directory.h"

#include <sys/stat.h>

#include <cstdlib>
#include <string>
#include <system_error>

#include "services/common/start_error.h"
#include "services/common/text_file.h"

namespace qv_notify {

namespace {

namespace fs = std::filesystem;
using qv_service::StartError;

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

fs::path BaseDirectory(const Settings& settings) {
    if (const std::string base = Environment("QV_NOTIFY_DATA"); !base.empty()) {
        return base;
    }
    if (!settings.ior_file.empty()) {
        return fs::absolute(settings.ior_file).parent_path();
    }
    if (const std::string state = Environment("XDG_STATE_HOME"); !state.empty()) {
        return fs::path(state) / "qv_notify";
    }
    if (const std::string home = Environment("HOME"); !home.empty()) {
        return fs::path(home) / ".local/state/qv_notify";
    }
    throw StartError(
        "There is no place for persistent channels: give a directory with \"-u\" or in QV_NOTIFY_DATA.",
        qv_service::kExitUsage);
}

}  // namespace

fs::path ChooseDataDirectory(const Settings& settings) {
    const fs::path directory = settings.data_directory.empty()
                                   ? BaseDirectory(settings) / ("notify-" + std::to_string(settings.port))
                                   : fs::path(settings.data_directory);
    return fs::absolute(directory).lexically_normal();
}

fs::path PrepareStoreFile(const fs::path& directory) {
    std::error_code error;
    if (fs::create_directories(directory, error)) {
        chmod(directory.c_str(), 0700);
    }
    if (error) {
        throw StartError("The directory " + directory.string() + " for persistent channels cannot be made: " +
                         error.message() + ". Correct the path or its rights, or name another with \"-u\".");
    }
    qv_service::RequireWritable(directory / "probe", "persistent channels");
    return directory / "notify.db";
}

}  // namespace qv_notify
