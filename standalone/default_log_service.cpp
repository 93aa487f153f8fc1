#include <cstdlib>

#include "platform/environment.h"
#include "standalone/config_store.h"
#include "standalone/file_log_service.h"

namespace qv_standalone {
namespace {

FileLogOptions OptionsFromConfiguration() {
    ConfigStore& store = ConfigStore::Instance();
    FileLogOptions options;
    options.directory = NS_BUNDLEMGR1::GetNBILogPath();
    options.limits.level = static_cast<int>(store.PlatformNumber("log_level"));
    options.limits.max_size = static_cast<std::uint64_t>(store.PlatformNumber("log_max_size")) << 20;
    options.limits.max_files = static_cast<std::uint64_t>(store.PlatformNumber("log_max_files"));
    options.flush_interval = std::chrono::milliseconds(store.PlatformNumber("log_flush_interval"));
    options.verbose = store.PlatformNumber("verbose_log") != 0;
    return options;
}

}  // namespace

NS_LOG_SERVICE1::LogSvcInterface& DefaultLogService() {
    static auto* const service = new FileLogService(OptionsFromConfiguration());
    return *service;
}

}  // namespace qv_standalone
