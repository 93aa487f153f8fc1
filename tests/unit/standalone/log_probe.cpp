// A process that logs, goes to its end by exit, and logs once more while its objects are destroyed.
#include <cstdlib>
#include <iostream>

#include "platform/bundle_mgr.h"
#include "platform/log_service.h"
#include "standalone/registry.h"

namespace {

NS_LOG_SERVICE1::LogHandle* g_log = nullptr;

struct LastWords {
    ~LastWords() {
        if (g_log != nullptr) {
            g_log->Write("probe", "", 3, 3, "last words");
            g_log->Write("probe", "", 4, -1, "and an operation");
        }
    }
} g_lastWords;  // made before the log service, so it goes after that has heard of the end

}  // namespace

int main() {
    auto* const bundle = NS_BUNDLEMGR1::BundleMgr::Instance()->GetBundle(qv_standalone::kPlatformBundle);
    auto* const service = dynamic_cast<NS_LOG_SERVICE1::LogSvcInterface*>(
        bundle->GetServiceObjects().at(qv_standalone::kLogService)->GetInterface());
    g_log = service == nullptr ? nullptr : service->OpenLog("b", "m", "probe");
    if (g_log == nullptr) {
        std::cerr << "log_probe: there is no log\n";
        return 1;
    }
    g_log->Write("probe", "", 1, 3, "a trace");
    g_log->Write("probe", "", 2, -1, "an operation");
    std::exit(0);
}
