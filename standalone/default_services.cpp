#include "standalone/default_services.h"

#include "standalone/config_store.h"
#include "standalone/flush_timer.h"
#include "standalone/platform_log.h"
#include "standalone/security_service.h"

namespace qv_standalone {
namespace {

constexpr std::chrono::seconds kRefreshInterval{1};

SecurityOptions SecurityOptionsFromConfiguration() {
    ConfigStore& store = ConfigStore::Instance();
    SecurityOptions options;
    options.users_file = store.PlatformPath("users_file");
    options.risk_file = store.PlatformPath("risk_file");
    options.max_failures = static_cast<unsigned>(store.PlatformNumber("login_max_failures"));
    options.lock_time = std::chrono::seconds(store.PlatformNumber("login_lock_time"));
    options.max_checks = static_cast<unsigned>(store.PlatformNumber("login_max_checks"));
    options.max_waiting = static_cast<unsigned>(store.PlatformNumber("login_max_waiting"));
    return options;
}

struct RefreshedSecurity {
    SecurityService service{SecurityOptionsFromConfiguration(), [](int level, const std::string& text) {
                                WritePlatformLog("corbasecurity", level, text);
                            }};
    FlushTimer refresh{kRefreshInterval, [this] { service.Refresh(); }};
};

}  // namespace

NS_BUNDLEMGR1::ServiceInterface& DefaultSecurityService() {
    static auto* const security = new RefreshedSecurity;
    return security->service;
}

}  // namespace qv_standalone
