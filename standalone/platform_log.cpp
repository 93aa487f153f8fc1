#include "standalone/platform_log.h"

#include "platform/bundle_mgr.h"
#include "platform/log_service.h"
#include "standalone/registry.h"
#include "standalone/report.h"

namespace qv_standalone {
namespace {

NS_LOG_SERVICE1::LogSvcInterface* FindLogService() {
    std::lock_guard<std::recursive_mutex> guard(NS_BUNDLEMGR1::g_actualmutex);
    for (const auto& [name, bundle] : NS_BUNDLEMGR1::BundleMgr::Instance()->GetBundles()) {
        const auto objects = bundle->GetServiceObjects();
        if (const auto found = objects.find(kLogService); found != objects.end()) {
            if (auto* const service =
                    dynamic_cast<NS_LOG_SERVICE1::LogSvcInterface*>(found->second->GetInterface())) {
                return service;
            }
        }
    }
    return nullptr;
}

}  // namespace

void WritePlatformLog(const std::string& category, int level, const std::string& text) noexcept {
    try {
        NS_LOG_SERVICE1::LogSvcInterface* const service = FindLogService();
        NS_LOG_SERVICE1::LogHandle* const log =
            service == nullptr ? nullptr : service->OpenLog(kPlatformBundle, category, category);
        if (log != nullptr) {
            log->Write(category, "unknown", 0, level, text);
            return;
        }
    } catch (...) {
        // The standard error is left.
    }
    Report(text);
}

}  // namespace qv_standalone
