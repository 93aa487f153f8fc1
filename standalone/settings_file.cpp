#include "standalone/settings_file.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "standalone/consistency.h"
#include "standalone/nearest_key.h"
#include "standalone/setting_value.h"
#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

constexpr std::uintmax_t kLargestFile = 1024UL * 1024;

int LineOf(const toml::node& node) {
    return static_cast<int>(node.source().begin.line);
}

std::string KindName(const toml::node& node) {
    switch (node.type()) {
        case toml::node_type::boolean:
            return node.as_boolean()->get() ? "true" : "false";
        case toml::node_type::integer:
            return "the number " + std::to_string(node.as_integer()->get());
        case toml::node_type::floating_point:
            return "a fractional number";
        case toml::node_type::string:
            return "a text";
        case toml::node_type::array:
            return "a list";
        case toml::node_type::table:
            return "a table";
        default:
            return "a date or time";
    }
}

RawValue Reduce(const toml::node& node) {
    RawValue raw;
    raw.kind_name = KindName(node);
    if (const auto* boolean = node.as_boolean()) {
        raw.kind = RawValue::kBoolean;
        raw.integer = boolean->get() ? 1 : 0;
    } else if (const auto* integer = node.as_integer()) {
        raw.kind = RawValue::kInteger;
        raw.integer = integer->get();
    } else if (const auto* text = node.as_string()) {
        raw.kind = RawValue::kString;
        raw.text = text->get();
    }
    return raw;
}

std::string DefaultStays(const Setting& setting) {
    return "the default " + InitialAsToml(setting) + " stays";
}

/// Takes one parsed file apart, table by table.
class Reader {
  public:
    explicit Reader(SettingsFile& file) : m_file(file) {}

    void Read(const toml::table& root) {
        for (const auto& [key, node] : root) {
            const std::string name(key.str());
            const auto* table = node.as_table();
            if (table != nullptr && (name == "agent" || name == "platform")) {
                ReadTable(name, *table);
            } else if (name == "agent" || name == "platform") {
                Find(LineOf(node), name, "is a table of settings, not " + KindName(node), "ignored");
            } else {
                Unknown("", name, node);
            }
        }
    }

  private:
    void ReadTable(const std::string& tableName, const toml::table& table) {
        for (const auto& [key, node] : table) {
            const std::string name(key.str());
            if (FindSetting(tableName, name) == nullptr) {
                Unknown(tableName, name, node);
            }
        }
        for (const Setting& setting : AllSettings()) {
            const toml::node* const node = tableName == setting.table ? table.get(setting.key) : nullptr;
            if (node != nullptr) {
                m_file.lines[setting.key] = LineOf(*node);
                Take(setting, *node);
            }
        }
    }

    void Take(const Setting& setting, const toml::node& node) {
        if (const auto* array = node.as_array(); array != nullptr && setting.type == ValueType::kTextList) {
            TakeList(setting, *array);
            return;
        }
        const Converted converted = ConvertValue(setting, Reduce(node));
        if (!converted.problem.empty()) {
            Find(LineOf(node), setting.key, converted.problem, DefaultStays(setting));
        } else if (std::strcmp(setting.table, "agent") == 0) {
            m_file.items.push_back({setting.key, converted.value});
        } else {
            m_file.platform[setting.key] = converted.value;
        }
    }

    void TakeList(const Setting& setting, const toml::array& array) {
        for (const toml::node& element : array) {
            const auto* text = element.as_string();
            std::string problem = text == nullptr       ? "wants texts in its list, not " + KindName(element)
                                  : text->get().empty() ? "holds an empty text"
                                                        : TextProblem(text->get());
            if (problem.empty()) {
                m_file.oss_addresses.push_back(text->get());
            } else {
                Find(LineOf(element), setting.key, std::move(problem), "that entry is left out");
            }
        }
    }

    void Unknown(const std::string& tableName, const std::string& key, const toml::node& node) {
        for (const char* const other : {"agent", "platform"}) {
            if (tableName != other && FindSetting(other, key) != nullptr) {
                Find(LineOf(node), key, std::string("belongs under [") + other + "]", "ignored");
                return;
            }
        }
        const std::string nearest = node.is_table() ? NearestTable(key) : NearestKey(key);
        const std::string hint = nearest.empty() ? "" : "; did you mean " + nearest + "?";
        const char* const what = node.is_table() ? "is not a known table" : "is not a known key";
        Find(LineOf(node), key, what + hint, "ignored");
    }

    void Find(int line, std::string key, std::string problem, std::string taken) {
        m_file.findings.push_back({line, std::move(key), std::move(problem), std::move(taken)});
    }

    SettingsFile& m_file;
};

SettingsFile Unusable(const std::string& path, int line, std::string problem) {
    SettingsFile file;
    file.path = path;
    file.findings.push_back({line, "", std::move(problem), "nothing of this file is used"});
    return file;
}

}  // namespace

SettingsFile ParseSettings(const std::string& contents, const std::string& path) {
    try {
        const toml::table root = toml::parse(contents, path);
        SettingsFile file;
        file.path = path;
        file.usable = true;
        Reader(file).Read(root);
        AddConsistencyFindings(file);
        std::stable_sort(file.findings.begin(), file.findings.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
        return file;
    } catch (const toml::parse_error& error) {
        return Unusable(path, static_cast<int>(error.source().begin.line),
                        "is not TOML: " + std::string(error.description()));
    }
}

SettingsFile ReadSettingsFile(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) {
        return Unusable(path, 0, "there is no such file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        return Unusable(path, 0, "is not a regular file");
    }
    if (const auto size = std::filesystem::file_size(path, error); !error && size > kLargestFile) {
        return Unusable(path, 0, "is larger than 1 MiB, which no configuration file is");
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    const std::string contents{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        return Unusable(path, 0, std::string("can't be read: ") + std::strerror(errno));
    }
    return ParseSettings(contents, path);
}

std::string FindingText(const std::string& path, const Finding& finding) {
    std::string text = path;
    if (finding.line > 0) {
        text += ":" + std::to_string(finding.line);
    }
    text += ": ";
    if (!finding.key.empty()) {
        text += finding.key + ": ";
    }
    text += finding.problem;
    if (!finding.taken.empty()) {
        text += "; " + finding.taken;
    }
    return text;
}

}  // namespace qv_standalone
