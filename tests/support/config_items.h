#pragma once

#include <string>
#include <utility>
#include <vector>

#include "standalone/registry.h"

namespace qv_test {

/// While it lives the configuration store delivers exactly these pairs; afterwards it reads its file again.
class ScopedConfigItems {
  public:
    explicit ScopedConfigItems(const std::vector<std::pair<std::string, std::string>>& items = {},
                               const std::string& hostIp = "127.0.0.1", bool lvsMode = false) {
        m_items.host_ip = hostIp;
        m_items.lvs_mode = lvsMode;
        for (const auto& [name, value] : items) {
            m_items.items.push_back({name, value});
        }
        qv_standalone::UseConfigItems(m_items);
    }
    ~ScopedConfigItems() { qv_standalone::UseConfigFile(); }
    ScopedConfigItems(const ScopedConfigItems&) = delete;
    ScopedConfigItems& operator=(const ScopedConfigItems&) = delete;

    /// Adds a pair, or changes its value.
    void Set(const std::string& name, const std::string& value) {
        Erase(name, false);
        m_items.items.push_back({name, value});
        qv_standalone::UseConfigItems(m_items);
    }

    /// Takes a pair out.
    void Erase(const std::string& name) { Erase(name, true); }

    /// Sets the list of OSS addresses.
    void SetIPAddresses(const std::vector<std::string>& addresses) {
        m_items.ip_addresses.clear();
        for (const std::string& address : addresses) {
            m_items.ip_addresses.push_back({"oss", address});
        }
        qv_standalone::UseConfigItems(m_items);
    }

  private:
    void Erase(const std::string& name, bool publish) {
        auto& list = m_items.items;
        for (auto it = list.begin(); it != list.end();) {
            it = it->name == name ? list.erase(it) : it + 1;
        }
        if (publish) {
            qv_standalone::UseConfigItems(m_items);
        }
    }

    qv_standalone::ConfigItems m_items;
};

}  // namespace qv_test
