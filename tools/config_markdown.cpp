#include "tools/config_markdown.h"

#include <ostream>
#include <string>

#include "standalone/settings_table.h"

namespace qv_tools {
namespace {

using qv_standalone::AllSettings;
using qv_standalone::Setting;

constexpr const char* kHead = R"(# Configuration reference

<!-- `qv_config --markdown` writes this page from standalone/settings_table.cpp: change it there. -->

All settings of the agent and its stand-alone platform. They stand in one TOML file, in the tables `[agent]` and
`[platform]`. The first of these names it:

1. the environment variable `QV_AGENT_CONFIG`: the file itself;
2. the environment variable `QV_CFG_DIR`: the directory of a `corba_agent.toml`.

`qv_config --sample` prints a commented file to begin with, and `qv_config --check FILE` tells what is wrong with one.

A key that is absent has its default. A value that can't be used is reported with file, line and key on standard error,
and the default stays; a key that is misspelled is reported with the nearest one. The agent reads the file once, when it
starts. Only `oss_addresses`, and what stands in `users_file` and `risk_file`, is looked at again while it runs.
)";

/// `text` for a cell: a bar would end it, and an angle bracket begin a tag.
std::string Cell(const std::string& text) {
    std::string cell;
    for (const char c : text) {
        if (c == '|' || c == '<' || c == '[' || c == ']') {
            cell += '\\';
        }
        cell += c;
    }
    return cell;
}

std::string Code(const std::string& text) {
    return text.empty() ? "" : "`" + text + "`";
}

std::string Values(const Setting& setting) {
    std::string values = qv_standalone::TypeName(setting.type);
    if (const std::string range = qv_standalone::RangeText(setting); !range.empty()) {
        values += ", " + range;
    }
    return setting.unit[0] == '\0' ? values : values + " " + setting.unit;
}

void PrintRow(std::ostream& out, const Setting& setting) {
    out << "| " << Code(setting.key) << " | " << Values(setting) << " | "
        << Code(qv_standalone::InitialAsToml(setting)) << " | " << Cell(setting.meaning) << " | "
        << Code(setting.example) << " |\n";
}

void PrintGroup(std::ostream& out, const std::string& table, const std::string& group) {
    out << "\n### " << group << "\n\n"
        << "| Key | Values | Default | Meaning | Example |\n"
        << "|---|---|---|---|---|\n";
    for (const Setting& setting : AllSettings()) {
        if (table == setting.table && group == setting.group) {
            PrintRow(out, setting);
        }
    }
}

}  // namespace

void PrintMarkdown(std::ostream& out) {
    out << kHead;
    for (const char* const table : {"agent", "platform"}) {
        out << "\n## Table `[" << table << "]`\n";
        for (const std::string& group : qv_standalone::GroupsOf(table)) {
            PrintGroup(out, table, group);
        }
    }
}

}  // namespace qv_tools
