#include "standalone/risk_table.h"

#include <toml++/toml.h>

#include <algorithm>
#include <fstream>
#include <utility>

namespace qv_standalone {
namespace {

// Exact names. Logins and secrets first, then what changes the network, then what changes only names.
constexpr std::pair<const char*, int> kDefaults[] = {
    {"getEmsSession", 1},
    {"modifyPassword", 2},
    {"getNMorEmManager", 1},
    {"createSNC", 2},
    {"createAndActivateSNC", 2},
    {"activateSNC", 2},
    {"deactivateSNC", 2},
    {"deleteSNC", 2},
    {"deactivateAndDeleteSNC", 2},
    {"createModifiedSNC", 2},
    {"createTopologicalLink", 2},
    {"deleteTopologicalLink", 2},
    {"createProtectionGroup", 2},
    {"deleteProtectionGroup", 2},
    {"performProtectionCommand", 2},
    {"createGTP", 2},
    {"modifyGTP", 2},
    {"deleteGTP", 2},
    {"createFlowDomain", 2},
    {"deleteFlowDomain", 2},
    {"createAndActivateFDFr", 2},
    {"deactivateAndDeleteFDFr", 2},
    {"modifyFDFr", 2},
    {"provisionEquipment", 2},
    {"unprovisionEquipment", 2},
    {"setTPData", 2},
    {"createTCProfile", 1},
    {"deleteTCProfile", 1},
    {"modifyTCProfile", 1},
    {"setTCATPParameter", 1},
    {"enablePMData", 1},
    {"disablePMData", 1},
    {"clearPMData", 1},
    {"createPMCollectionTask", 1},
    {"setAlarmReportingOn", 1},
    {"setAlarmReportingOff", 2},
    {"acknowledgeAlarms", 1},
    {"unacknowledgeAlarms", 1},
    {"setNativeEMSName", 1},
    {"setUserLabel", 1},
    {"setOwner", 1},
    {"setAdditionalInfo", 1},
};

std::string Where(const std::string& path, const toml::source_region& region) {
    return path + ":" + std::to_string(region.begin.line) + ": ";
}

}  // namespace

RiskTable RiskTable::Default() {
    RiskTable table;
    for (const auto& [name, level] : kDefaults) {
        table.Add(name, level);
    }
    return table;
}

RiskTable RiskTable::Load(const std::string& path) {
    toml::table root;
    try {
        root = toml::parse_file(path);
    } catch (const toml::parse_error& e) {
        throw RiskFileError(Where(path, e.source()) + std::string(e.description()));
    }
    const toml::table* const levels = root["risk"].as_table();
    if (levels == nullptr) {
        throw RiskFileError(path + ": holds no table [risk]");
    }
    RiskTable table;
    for (const auto& [key, node] : *levels) {
        const toml::value<std::int64_t>* const level = node.as_integer();
        if (level == nullptr || level->get() < 0 || level->get() > 2) {
            throw RiskFileError(Where(path, node.source()) + std::string(key.str()) +
                                ": a level is 0 (not audited), 1 (minor risk) or 2 (risk)");
        }
        table.Add(std::string(key.str()), static_cast<int>(level->get()));
    }
    return table;
}

void RiskTable::Add(const std::string& name, int level) {
    if (name.empty() || name.back() != '*') {
        m_levels[name] = level;
        return;
    }
    const std::string beginning = name.substr(0, name.size() - 1);
    m_beginnings[beginning] = level;
    m_longest_beginning = std::max(m_longest_beginning, beginning.size());
}

int RiskTable::LevelOf(const std::string& operation) const {
    if (const auto found = m_levels.find(operation); found != m_levels.end()) {
        return found->second;
    }
    if (m_beginnings.empty()) {
        return 0;
    }
    std::string beginning = operation.substr(0, m_longest_beginning);
    while (true) {
        if (const auto found = m_beginnings.find(beginning); found != m_beginnings.end()) {
            return found->second;
        }
        if (beginning.empty()) {
            return 0;
        }
        beginning.pop_back();
    }
}

}  // namespace qv_standalone
