#include "standalone/config_store.h"

#include <cstdlib>
#include <utility>

#include "standalone/config_file_path.h"
#include "standalone/file_places.h"
#include "standalone/report.h"
#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

void ReportFindings(const SettingsFile& file, bool keepsFormer) {
    for (const Finding& finding : file.findings) {
        Report(FindingText(file.path, finding));
    }
    if (!file.usable) {
        Report(keepsFormer ? "the configuration that was read before stays in force"
                           : "the defaults of all settings are in force; `qv_config --sample` prints a file");
    }
}

}  // namespace

ConfigStore& ConfigStore::Instance() {
    static auto* const instance = new ConfigStore;
    return *instance;
}

const SettingsFile& ConfigStore::Current() {
    FileStamp stamp = StampOf(ConfigFilePath());
    if (m_stamp && *m_stamp == stamp) {
        return m_file;
    }
    const bool sameFile = m_stamp && m_stamp->path == stamp.path;
    m_stamp = stamp;
    if (stamp.path.empty()) {
        m_file = SettingsFile();
        Report(
            "no configuration file: set QV_AGENT_CONFIG to a file, or QV_CFG_DIR to the directory of "
            "corba_agent.toml. The defaults of all settings are in force");
        return m_file;
    }
    SettingsFile file = ReadSettingsFile(stamp.path);
    const bool keepsFormer = sameFile && m_file.usable && !file.usable;
    ReportFindings(file, keepsFormer);
    if (!keepsFormer) {
        m_file = std::move(file);
    }
    return m_file;
}

std::vector<NS_BUNDLEMGR1::NameValueStru> ConfigStore::Items() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_override ? m_override->items : Current().items;
}

std::vector<NS_BUNDLEMGR1::NameValueStru> ConfigStore::IPAddresses() {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_override) {
        return m_override->ip_addresses;
    }
    std::vector<NS_BUNDLEMGR1::NameValueStru> list;
    for (const std::string& address : Current().oss_addresses) {
        list.push_back({"oss", address});
    }
    return list;
}

std::string ConfigStore::HostIP() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_override ? m_override->host_ip : TextOf("host_ip");
}

bool ConfigStore::LvsMode() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_override ? m_override->lvs_mode : TextOf("lvs_mode") == "1";
}

std::string ConfigStore::PlatformText(const std::string& key) {
    std::lock_guard<std::mutex> guard(m_lock);
    return TextOf(key);
}

long long ConfigStore::PlatformNumber(const std::string& key) {
    return std::strtoll(PlatformText(key).c_str(), nullptr, 10);
}

std::string ConfigStore::PlatformPath(const std::string& key) {
    std::lock_guard<std::mutex> guard(m_lock);
    const std::string initial = TextOf(key);
    const bool fromFile = !m_override && m_file.platform.count(key) != 0;
    return fromFile ? PathIn(m_file, key) : initial;
}

/// Under the lock: the file's value, otherwise the default.
std::string ConfigStore::TextOf(const std::string& key) {
    if (!m_override) {
        const auto& values = Current().platform;
        if (const auto found = values.find(key); found != values.end()) {
            return found->second;
        }
    }
    const Setting* const setting = FindSetting("platform", key);
    return setting == nullptr ? "" : setting->initial;
}

void ConfigStore::Use(ConfigItems items) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_override = std::move(items);
}

void ConfigStore::UseFile() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_override.reset();
}

void UseConfigItems(ConfigItems items) {
    ConfigStore::Instance().Use(std::move(items));
}
void UseConfigFile() {
    ConfigStore::Instance().UseFile();
}

}  // namespace qv_standalone
