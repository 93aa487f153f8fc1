#include "standalone/sample_file.h"

#include <gtest/gtest.h>

#include <cctype>
#include <sstream>

#include "standalone/settings_file.h"
#include "standalone/settings_table.h"

using qv_standalone::AllSettings;
using qv_standalone::ParseSettings;
using qv_standalone::SampleFile;
using qv_standalone::Setting;
using qv_standalone::SettingsFile;

namespace {

/// The sample with all settings taken out of their comments.
std::string AllSwitchedOn() {
    std::istringstream lines(SampleFile());
    std::string out;
    for (std::string line; std::getline(lines, line);) {
        const bool setting =
            line.size() > 1 && line[0] == '#' && std::isalpha(static_cast<unsigned char>(line[1])) != 0;
        out += line.substr(setting ? 1 : 0) + "\n";
    }
    return out;
}

}  // namespace

TEST(SampleFile, ChangesNothingAsItIs) {
    const SettingsFile file = ParseSettings(SampleFile(), "sample");
    EXPECT_TRUE(file.usable);
    EXPECT_TRUE(file.findings.empty());
    EXPECT_TRUE(file.items.empty());
    EXPECT_TRUE(file.platform.empty());
}

TEST(SampleFile, HoldsEverySettingWithItsDefault) {
    const SettingsFile file = ParseSettings(AllSwitchedOn(), "sample");
    EXPECT_TRUE(file.usable);
    for (const auto& finding : file.findings) {
        ADD_FAILURE() << FindingText("sample", finding);
    }
    for (const Setting& setting : AllSettings()) {
        SCOPED_TRACE(setting.key);
        std::string value = "(absent)";
        if (std::string(setting.table) == "agent") {
            NS_BUNDLEMGR1::GetValByKey(value, setting.key, file.items);
            EXPECT_EQ(value, setting.initial);
        } else if (setting.type != qv_standalone::ValueType::kTextList) {
            EXPECT_EQ(file.platform.at(setting.key), setting.initial);
        }
        EXPECT_EQ(file.lines.count(setting.key), 1U);
    }
}

TEST(SampleFile, EachExampleIsGood) {
    for (const Setting& setting : AllSettings()) {
        const std::string contents =
            "[" + std::string(setting.table) + "]\n" + setting.key + " = " + setting.example + "\n";
        for (const auto& finding : ParseSettings(contents, "example").findings) {
            const bool wantsProfile = std::string(setting.key) == "SSLMode";
            EXPECT_TRUE(wantsProfile) << FindingText("example", finding);
        }
    }
}

TEST(SampleFile, KeepsItsLinesReadable) {
    std::istringstream lines(SampleFile());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 110U) << line;
    }
}
