#pragma once

#include <string>
#include <vector>

namespace qv_standalone {

enum class ValueType {
    kFlag,      ///< delivered as "1" or "0"
    kInteger,   ///< delivered as decimal digits
    kText,      ///< delivered as it is
    kTextList,  ///< a list of texts
};

/// One setting of the configuration file. The table of these is the only place where a setting is described:
/// defaults, the annotated sample file, the list and the check of a file all come from it.
struct Setting {
    const char* table;    ///< the file's table that it stands in: "agent" or "platform"
    const char* group;    ///< heading in the sample file
    const char* key;      ///< name of the setting
    ValueType type;       ///< what the file may hold for it
    const char* initial;  ///< the value in force when the key is absent, as delivered
    long long min;        ///< smallest integer allowed
    long long max;        ///< largest integer allowed
    const char* unit;     ///< "s", "ms", ...; empty for none
    const char* meaning;  ///< one or two sentences
    const char* example;  ///< an example in the file's syntax
};

/// All settings, in the order in which they are documented and delivered. Never changes.
const std::vector<Setting>& AllSettings();

/// The headings of `table`, in the order of their first settings.
std::vector<std::string> GroupsOf(const std::string& table);

/// The setting `key` of `table`; null when there is none.
const Setting* FindSetting(const std::string& table, const std::string& key);

/// "flag", "integer", "text" or "list of texts".
const char* TypeName(ValueType type);

/// The default in the file's syntax: true, 12001, "localhost", [].
std::string InitialAsToml(const Setting& setting);

/// The range of an integer as "0 to 65535"; empty for other types.
std::string RangeText(const Setting& setting);

}  // namespace qv_standalone
