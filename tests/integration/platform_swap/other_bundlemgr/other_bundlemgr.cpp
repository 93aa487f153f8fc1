// Another bundle manager library, written to the declarations alone, with answers that can be told from those
// of the stand-alone one. Its log service writes to the standard output.
#include <iostream>

#include "platform/bundle_mgr.h"
#include "platform/corba_config_items.h"
#include "platform/environment.h"
#include "platform/log_service.h"

namespace {

class OtherLog final : public NS_LOG_SERVICE1::LogHandle {
  public:
    void Write(const std::string& /*file*/, const std::string& /*function*/, int /*line*/, int /*level*/,
               const std::string& text) override {
        std::cout << "other-log " << text << std::endl;
    }
    void WriteFormat(const std::string& /*file*/, const std::string& /*function*/, int /*line*/,
                     int /*level*/, const char* format, ...) override {
        std::cout << "other-log " << format << std::endl;
    }
};

class OtherLogService final : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string& /*bundle*/, const std::string& /*module*/,
                                        const std::string& /*category*/) override {
        static OtherLog log;
        return &log;
    }
    int IsVerboseLog() override { return 0; }
};

class OtherObject final : public NS_BUNDLEMGR1::ServiceObjectBase {
  public:
    NS_BUNDLEMGR1::ServiceInterface* GetInterface() override {
        static OtherLogService service;
        return &service;
    }
};

class OtherBundle final : public NS_BUNDLEMGR1::Bundle {
  public:
    std::string GetName() const override { return "other_bundle"; }
    NS_BUNDLEMGR1::ServiceObjectMap GetServiceObjects() const override {
        static OtherObject object;
        return {{"other_object", &object}};
    }
};

class OtherBuffer final : public NS_BUNDLEMGR1::InterfaceBuffer {
  public:
    NS_BUNDLEMGR1::ServiceInterface* Front() const noexcept override { return nullptr; }
    void Append(NS_BUNDLEMGR1::ServiceInterface* /*service*/) override {}
};

OtherBundle& TheBundle() {
    static OtherBundle bundle;
    return bundle;
}

}  // namespace

namespace NS_BUNDLEMGR1 {

std::recursive_mutex g_actualmutex;

BundleMgr::BundleMgr() = default;
BundleMgr* BundleMgr::Instance() {
    static auto* const instance = new BundleMgr;
    return instance;
}
Bundle* BundleMgr::GetBundle(const std::string& /*name*/) {
    return &TheBundle();
}
BundleMap BundleMgr::GetBundles() {
    return {{"other_bundle", &TheBundle()}};
}
int BundleMgr::GetRunState() {
    return 0;
}

InterfaceBuffer& CheckIFBuf(const std::string& /*name*/) {
    static OtherBuffer buffer;
    return buffer;
}

CorbaConfigItems::CorbaConfigItems() = default;
CorbaConfigItems* CorbaConfigItems::Instance() {
    static auto* const instance = new CorbaConfigItems;
    return instance;
}
bool CorbaConfigItems::GetCorbaConfigItems(std::vector<NameValueStru>& items) {
    items = {{"EmsName", "Other/EMS"}};
    return true;
}
bool CorbaConfigItems::GetIntItemInfo(const std::string& /*key*/, int& /*value*/) {
    return false;
}
bool CorbaConfigItems::GetHostIP(std::string& ip) {
    ip = "192.0.2.99";
    return true;
}
bool CorbaConfigItems::GetLvsMode() {
    return false;
}
bool CorbaConfigItems::GetIPAddressList(std::vector<NameValueStru>& list) {
    list.clear();
    return true;
}

bool GetValByKey(std::string& value, const std::string& key, const std::vector<NameValueStru>& items) {
    for (const NameValueStru& item : items) {
        if (item.name == key) {
            value = item.value;
            return true;
        }
    }
    return false;
}

std::string GetXDENEnvironment() {
    return "/other/root";
}
std::string GetCfgDirPath() {
    return "/other/cfg";
}
std::string GetNBILogPath() {
    return "/other/log";
}

}  // namespace NS_BUNDLEMGR1
