#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/name_value.h"
#include "standalone/file_stamp.h"
#include "standalone/registry.h"
#include "standalone/settings_file.h"

namespace qv_standalone {

/// The configuration of this process: a file, or what a program put in its place. The file is read again when
/// it has changed. A file that has become unusable leaves what was read last in force. What is wrong is
/// reported on the standard error, once per change. Any thread may call any operation.
class ConfigStore {
  public:
    /// The only instance, never destroyed.
    static ConfigStore& Instance();

    std::vector<NS_BUNDLEMGR1::NameValueStru> Items();
    std::vector<NS_BUNDLEMGR1::NameValueStru> IPAddresses();
    std::string HostIP();
    bool LvsMode();

    /// A setting of the platform's own: the file's value, otherwise the default of the table of settings.
    std::string PlatformText(const std::string& key);
    long long PlatformNumber(const std::string& key);
    /// As PlatformText, for a path: a relative one from the file counts from the file's directory.
    std::string PlatformPath(const std::string& key);

    void Use(ConfigItems items);
    void UseFile();

  private:
    ConfigStore() = default;
    const SettingsFile& Current();
    std::string TextOf(const std::string& key);

    std::mutex m_lock;  // guards what follows
    std::optional<ConfigItems> m_override;
    SettingsFile m_file;
    std::optional<FileStamp> m_stamp;
};

}  // namespace qv_standalone
