#include "standalone/consistency.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "standalone/settings_file.h"
#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

constexpr const char* kStays = "the values stay as they are";

std::string ValueInForce(const SettingsFile& file, const std::string& key) {
    std::string value;
    for (const auto& item : file.items) {
        if (item.name == key) {
            return item.value;
        }
    }
    const Setting* const setting = FindSetting("agent", key);
    return setting == nullptr ? "" : setting->initial;
}

int LineOfKey(const SettingsFile& file, const std::string& key) {
    const auto found = file.lines.find(key);
    return found == file.lines.end() ? 0 : found->second;
}

std::string Host(const SettingsFile& file, const std::string& process) {
    const std::string host = ValueInForce(file, process + "_Host");
    return host == "127.0.0.1" ? "localhost" : host;
}

std::string AlsoTaken(const std::string& port, const std::string& other) {
    return "port " + port + " is also the one of " + other;
}

void CheckPorts(SettingsFile& file, bool ssl) {
    std::map<std::string, std::string> takenBy;  // "host:port" to the key that takes it
    for (const char* const process : {"NamingService", "NotifyService", "CORBAAgent"}) {
        for (const char* const suffix : {"_Port", "_SSLPort"}) {
            const std::string key = std::string(process) + suffix;
            const std::string port = ValueInForce(file, key);
            const bool listens = port != "0" && (ssl || std::string(suffix) == "_Port");
            if (!listens) {
                continue;
            }
            const auto [entry, isNew] = takenBy.emplace(Host(file, process) + ":" + port, key);
            if (!isNew) {
                const bool mentioned = LineOfKey(file, key) > 0;
                const std::string& at = mentioned ? key : entry->second;
                const std::string& other = mentioned ? entry->second : key;
                file.findings.push_back({LineOfKey(file, at), at, AlsoTaken(port, other), kStays});
            }
        }
    }
}

void CheckSsl(SettingsFile& file) {
    if (ValueInForce(file, "SSL_Profile").empty()) {
        file.findings.push_back({LineOfKey(file, "SSLMode"), "SSLMode",
                                 "SSL is on, but SSL_Profile names no file with key and certificate",
                                 kStays});
    }
    const std::string port = "CORBAAgent_SSLPort";
    if (ValueInForce(file, port) == "0") {
        file.findings.push_back(
            {LineOfKey(file, LineOfKey(file, port) > 0 ? port : "SSLMode"), port,
             "SSL is on, but this port is 0, so the agent takes another one at each start and "
             "references that OSSs keep lead nowhere",
             kStays});
    }
}

/// The root of the installation; empty when it isn't set.
std::filesystem::path Root(const SettingsFile& file) {
    const char* const variable = std::getenv("QV_ENV_ROOT");
    if (variable != nullptr && *variable != '\0') {
        return variable;
    }
    const auto found = file.platform.find("env_root");
    if (found == file.platform.end() || found->second.empty()) {
        return {};
    }
    return std::filesystem::absolute(file.path).parent_path() / found->second;
}

void CheckProgram(SettingsFile& file, const std::string& process, const std::filesystem::path& root) {
    const std::string key = process + "_AutoStart";
    const std::filesystem::path program =
        root / "../cbb/nbi/nbicbb_3p/share/bin" / ValueInForce(file, process + "_Name");
    if (ValueInForce(file, key) != "0" && access(program.c_str(), X_OK) != 0) {
        file.findings.push_back(
            {LineOfKey(file, key), key,
             "the agent can't start " + program.lexically_normal().string() + ": there is no such program",
             kStays});
    }
}

}  // namespace

void AddConsistencyFindings(SettingsFile& file) {
    const bool ssl = ValueInForce(file, "SSLMode") != "0";
    CheckPorts(file, ssl);
    if (ssl) {
        CheckSsl(file);
    }
    if (const std::filesystem::path root = Root(file); !root.empty()) {
        CheckProgram(file, "NamingService", root);
        CheckProgram(file, "NotifyService", root);
    }
}

}  // namespace qv_standalone
