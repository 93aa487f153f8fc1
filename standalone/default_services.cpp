#include "standalone/default_services.h"

#include <filesystem>
#include <utility>

#include "platform/environment.h"
#include "standalone/audit_store.h"
#include "standalone/config_store.h"
#include "standalone/file_places.h"
#include "standalone/flush_timer.h"
#include "standalone/platform_log.h"
#include "standalone/report.h"
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

struct TendedAudit {
    explicit TendedAudit(std::string path) : store(std::move(path), Report) {}
    AuditStore store;
    FlushTimer tend{kRefreshInterval, [this] { store.Tend(); }};
};

std::string AuditPath() {
    const std::string path = ConfigStore::Instance().PlatformPath("audit_file");
    return path.empty() ? (std::filesystem::path(NS_BUNDLEMGR1::GetNBILogPath()) / kAuditFileName).string()
                        : path;
}

}  // namespace

NS_BUNDLEMGR1::ServiceInterface& DefaultSecurityService() {
    static auto* const security = new RefreshedSecurity;
    return security->service;
}

NS_BUNDLEMGR1::ServiceInterface& DefaultAuditService() {
    static auto* const audit = new TendedAudit(AuditPath());
    return audit->store;
}

}  // namespace qv_standalone
