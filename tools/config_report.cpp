#include "tools/config_report.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "standalone/settings_file.h"
#include "standalone/settings_table.h"
#include "tools/json_text.h"
#include "tools/text.h"

namespace qv_tools {
namespace {

using qv_standalone::AllSettings;
using qv_standalone::Finding;
using qv_standalone::Setting;
using qv_standalone::SettingsFile;

std::size_t TakenSettings(const SettingsFile& file) {
    return file.items.size() + file.platform.size() + (file.oss_addresses.empty() ? 0 : 1);
}

using Row = std::array<std::string, 5>;

Row RowOf(const Setting& setting) {
    std::string values = qv_standalone::RangeText(setting);
    if (setting.unit[0] != '\0') {
        values += (values.empty() ? "" : " ") + std::string(setting.unit);
    }
    return {setting.table, setting.key, qv_standalone::TypeName(setting.type),
            qv_standalone::InitialAsToml(setting), values};
}

}  // namespace

CheckResult ResultOf(const SettingsFile& file) {
    if (!file.usable) {
        return kUnusable;
    }
    return file.findings.empty() ? kGood : kFindings;
}

void PrintCheck(std::ostream& out, const SettingsFile& file) {
    for (const Finding& finding : file.findings) {
        out << Printable(FindingText(file.path, finding)) << "\n";
    }
    if (file.usable) {
        out << Printable(file.path) << ": " << Counted(TakenSettings(file), "setting")
            << " taken from the file, " << Counted(file.findings.size(), "finding") << "\n";
    }
}

void PrintCheckJson(std::ostream& out, const SettingsFile& file) {
    static constexpr const char* kResults[] = {"ok", "findings", "unusable"};
    Json::Value root(Json::objectValue);
    root["file"] = file.path;
    root["result"] = kResults[ResultOf(file)];
    root["settings"] = static_cast<Json::UInt64>(TakenSettings(file));
    root["findings"] = Json::Value(Json::arrayValue);
    for (const Finding& finding : file.findings) {
        Json::Value entry(Json::objectValue);
        entry["line"] = finding.line;
        entry["key"] = finding.key;
        entry["problem"] = finding.problem;
        entry["taken"] = finding.taken;
        root["findings"].append(std::move(entry));
    }
    PrintJson(out, root);
}

void PrintList(std::ostream& out) {
    std::vector<Row> rows = {{"TABLE", "KEY", "TYPE", "DEFAULT", "VALUES"}};
    for (const Setting& setting : AllSettings()) {
        rows.push_back(RowOf(setting));
    }
    std::array<std::size_t, 5> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}

void PrintListJson(std::ostream& out) {
    Json::Value list(Json::arrayValue);
    for (const Setting& setting : AllSettings()) {
        Json::Value entry(Json::objectValue);
        entry["table"] = setting.table;
        entry["group"] = setting.group;
        entry["key"] = setting.key;
        entry["type"] = qv_standalone::TypeName(setting.type);
        entry["default"] = qv_standalone::InitialAsToml(setting);
        entry["unit"] = setting.unit;
        entry["meaning"] = setting.meaning;
        entry["example"] = setting.example;
        if (setting.type == qv_standalone::ValueType::kInteger) {
            entry["min"] = static_cast<Json::Int64>(setting.min);
            entry["max"] = static_cast<Json::Int64>(setting.max);
        }
        list.append(std::move(entry));
    }
    PrintJson(out, list);
}

}  // namespace qv_tools
