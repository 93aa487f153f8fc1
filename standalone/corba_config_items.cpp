#include "platform/corba_config_items.h"

#include <cerrno>
#include <cstdlib>

#include "standalone/config_store.h"
#include "standalone/host_ip.h"

namespace NS_BUNDLEMGR1 {

using qv_standalone::ConfigStore;

CorbaConfigItems::CorbaConfigItems() = default;
CorbaConfigItems::~CorbaConfigItems() = default;

CorbaConfigItems* CorbaConfigItems::Instance() {
    static auto* const instance = new CorbaConfigItems;
    return instance;
}

bool CorbaConfigItems::GetCorbaConfigItems(std::vector<NameValueStru>& items) {
    items = ConfigStore::Instance().Items();
    return true;
}

bool CorbaConfigItems::GetIntItemInfo(const std::string& key, int& value) {
    std::string text;
    if (!GetValByKey(text, key, ConfigStore::Instance().Items())) {
        return false;
    }
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (end == text.c_str()) {
        return false;
    }
    value = static_cast<int>(number);
    return true;
}

bool CorbaConfigItems::GetHostIP(std::string& ip) {
    const std::string configured = ConfigStore::Instance().HostIP();
    const std::string found = configured.empty() ? qv_standalone::FirstHostIP() : configured;
    if (found.empty()) {
        return false;
    }
    ip = found;
    return true;
}

bool CorbaConfigItems::GetLvsMode() {
    return ConfigStore::Instance().LvsMode();
}

bool CorbaConfigItems::GetIPAddressList(std::vector<NameValueStru>& list) {
    list = ConfigStore::Instance().IPAddresses();
    return true;
}

}  // namespace NS_BUNDLEMGR1
