#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/bundle_mgr.h"
#include "platform/export.h"
#include "platform/name_value.h"

/// What only the stand-alone platform offers: filling the bundle manager and the configuration store by hand.
/// Programs that must also run on an EMS host don't use it. Thread safety: any thread may call any operation.
namespace qv_standalone {

/// The bundle of the stand-alone platform's own services.
inline constexpr const char* kPlatformBundle = "qv_platform_bundle";
/// The service object of its log service in that bundle.
inline constexpr const char* kLogService = "LogSvcInterface";
/// The service object of its security service in that bundle.
inline constexpr const char* kSecurityService = "SecurityIF";
/// The service object of its audit service in that bundle.
inline constexpr const char* kAuditService = "AuditLogif";

/// Puts `object` under `name` into `bundle`, which is made when it doesn't exist, and returns what was there
/// before. A null `object` takes the entry out. What lookups have found so far is forgotten, so the next one
/// sees the change. An object that was taken out may be destroyed as soon as no lookup is under way and
/// nobody uses its service.
QV_API std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> ReplaceServiceObject(
    const std::string& bundle, const std::string& name,
    std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> object);

/// A service object that hands out `service`, which stays the caller's and outlives it.
QV_API std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> MakeServiceObject(
    NS_BUNDLEMGR1::ServiceInterface& service);

/// Sets what BundleMgr::GetRunState answers; 0 at first, BundleMgr::kStopping for a process that is stopping.
QV_API void SetRunState(int state);

/// Contents for the configuration store that stand in for the configuration file.
struct QV_API ConfigItems {
    std::vector<NS_BUNDLEMGR1::NameValueStru>
        items;  ///< what GetCorbaConfigItems and GetIntItemInfo answer from
    std::vector<NS_BUNDLEMGR1::NameValueStru> ip_addresses;  ///< what GetIPAddressList answers
    std::string host_ip = "127.0.0.1";                       ///< what GetHostIP answers
    bool lvs_mode = false;                                   ///< what GetLvsMode answers
};

/// From now on the store answers from `items`, exactly as given and unchecked; no file is read.
QV_API void UseConfigItems(ConfigItems items);

/// From now on the store answers from the configuration file again.
QV_API void UseConfigFile();

}  // namespace qv_standalone
