#include "standalone/call_chain_settings.h"

#include <cstdlib>
#include <filesystem>

#include "platform/environment.h"
#include "standalone/config_file_path.h"
#include "standalone/file_places.h"
#include "standalone/settings_file.h"
#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

/// The bundle manager's store isn't asked: on a host with another bundle manager there is none.
class PlatformValues {
  public:
    std::string Text(const std::string& key) const {
        if (const auto found = m_file.platform.find(key); found != m_file.platform.end()) {
            return found->second;
        }
        const Setting* const setting = FindSetting("platform", key);
        return setting == nullptr ? "" : setting->initial;
    }
    std::uint64_t Number(const std::string& key) const {
        return std::strtoull(Text(key).c_str(), nullptr, 10);
    }

  private:
    static SettingsFile Read() {
        const std::string path = ConfigFilePath();
        return path.empty() ? SettingsFile() : ReadSettingsFile(path);
    }

    const SettingsFile m_file = Read();
};

}  // namespace

CallChainSettings ReadCallChainSettings() {
    const PlatformValues values;
    CallChainSettings settings;
    settings.on = values.Number("call_chain") != 0;
    if (!settings.on) {
        return settings;
    }
    SpanRecorderOptions& recorder = settings.recorder;
    recorder.file.path = (std::filesystem::path(NS_BUNDLEMGR1::GetNBILogPath()) / kSpanFileName).string();
    recorder.file.max_size = values.Number("call_chain_max_size") << 20;
    recorder.file.max_files = values.Number("call_chain_max_files");
    recorder.queue = values.Number("call_chain_queue");
    recorder.collector.url = values.Text("call_chain_collector");
    recorder.collector.queue = recorder.queue;
    return settings;
}

}  // namespace qv_standalone
