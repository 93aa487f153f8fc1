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

/// Whatever logs after this object's end finds a service that writes at once.
class EndOfProcess {
  public:
    explicit EndOfProcess(FileLogService& service) : m_service(service) {}
    ~EndOfProcess() { m_service.StopWaiting(); }
    EndOfProcess(const EndOfProcess&) = delete;
    EndOfProcess& operator=(const EndOfProcess&) = delete;

  private:
    FileLogService& m_service;
};

}  // namespace

NS_LOG_SERVICE1::LogSvcInterface& DefaultLogService() {
    static auto* const service = new FileLogService(OptionsFromConfiguration());
    static const EndOfProcess end(*service);
    // A process whose threads can't be ended leaves by quick_exit, which destroys nothing.
    static const int registered = std::at_quick_exit([] { service->StopWaiting(); });
    static_cast<void>(registered);
    return *service;
}

}  // namespace qv_standalone
