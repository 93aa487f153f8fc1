#include "standalone/sample_file.h"

#include <sstream>

#include "standalone/settings_table.h"

namespace qv_standalone {
namespace {

constexpr std::size_t kWidth = 98;

/// `text` as comment lines, broken at blanks.
void Comment(std::ostream& out, const std::string& text) {
    std::istringstream words(text);
    std::string word;
    std::string line;
    while (words >> word) {
        if (!line.empty() && line.size() + 1 + word.size() > kWidth) {
            out << "# " << line << "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    out << "# " << line << "\n";
}

void Describe(std::ostream& out, const Setting& setting) {
    Comment(out, setting.meaning);
    std::string facts = std::string("Type: ") + TypeName(setting.type);
    if (setting.unit[0] != '\0') {
        facts += ", in " + std::string(setting.unit);
    }
    if (const std::string range = RangeText(setting); !range.empty()) {
        facts += ", from " + range;
    }
    Comment(out, facts + ". Default: " + InitialAsToml(setting) + ". Example: " + setting.example);
    out << "#" << setting.key << " = " << InitialAsToml(setting) << "\n\n";
}

}  // namespace

std::string SampleFile() {
    std::ostringstream out;
    out << "# Configuration of the CORBA agent on a machine without the EMS platform, in TOML.\n"
           "# It is found through the environment variable QV_AGENT_CONFIG, otherwise as corba_agent.toml in "
           "the\n"
           "# directory that QV_CFG_DIR names. Take the # off a setting to change it; what stays a comment "
           "keeps\n"
           "# its default. `qv_config --check FILE` tells what is wrong with a file.\n";
    for (const char* const table : {"agent", "platform"}) {
        out << "\n[" << table << "]\n";
        for (const std::string& group : GroupsOf(table)) {
            out << "\n# ---- " << group << " ----\n\n";
            for (const Setting& setting : AllSettings()) {
                if (group == setting.group) {
                    Describe(out, setting);
                }
            }
        }
    }
    return out.str();
}

}  // namespace qv_standalone
