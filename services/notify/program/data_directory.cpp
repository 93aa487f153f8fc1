#include "services/notify/program/data_directory.h"

#include <sys/stat.h>

#include <string>
#include <system_error>

#include "services/common/start_error.h"
#include "services/common/state_directory.h"
#include "services/common/text_file.h"

namespace qv_notify {

namespace {

namespace fs = std::filesystem;
using qv_service::StartError;

constexpr qv_service::StateDirectory kChannels{"QV_NOTIFY_DATA", "qv_notify", "persistent channels"};

}  // namespace

fs::path ChooseDataDirectory(const Settings& settings) {
    return qv_service::ChooseStateDirectory(kChannels, settings.data_directory, settings.ior_file,
                                            "notify-" + std::to_string(settings.port));
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
    qv_service::RequireWritableFolder(directory, "persistent channels");
    return directory / "notify.db";
}

}  // namespace qv_notify
