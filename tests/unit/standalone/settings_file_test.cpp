#include "standalone/settings_file.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/temp_dir.h"

using qv_standalone::Finding;
using qv_standalone::FindingText;
using qv_standalone::ParseSettings;
using qv_standalone::ReadSettingsFile;
using qv_standalone::SettingsFile;

namespace {

/// "line key|problem|taken" of each finding.
std::vector<std::string> Findings(const SettingsFile& file) {
    std::vector<std::string> texts;
    for (const Finding& finding : file.findings) {
        texts.push_back(std::to_string(finding.line) + " " + finding.key + "|" + finding.problem + "|" +
                        finding.taken);
    }
    return texts;
}

std::string ValueOf(const SettingsFile& file, const std::string& key) {
    std::string value = "(absent)";
    NS_BUNDLEMGR1::GetValByKey(value, key, file.items);
    return value;
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(SettingsFile, DeliversOnlyWhatStandsInTheFile) {
    const SettingsFile file = ParseSettings("[agent]\nORBThreadNum = 7\nIsInterceptorEnabled = true\n", "x");
    EXPECT_TRUE(file.usable);
    EXPECT_EQ(Findings(file), Texts());
    ASSERT_EQ(file.items.size(), 2U);
    EXPECT_EQ(ValueOf(file, "ORBThreadNum"), "7");
    EXPECT_EQ(ValueOf(file, "IsInterceptorEnabled"), "1");
    EXPECT_EQ(ValueOf(file, "EmsName"), "(absent)");
}

TEST(SettingsFile, AnEmptyFileIsGoodAndDeliversNothing) {
    for (const char* const contents : {"", "# nothing\n", "[agent]\n[platform]\n"}) {
        const SettingsFile file = ParseSettings(contents, "x");
        EXPECT_TRUE(file.usable);
        EXPECT_TRUE(file.findings.empty());
        EXPECT_TRUE(file.items.empty());
    }
}

TEST(SettingsFile, TakesBooleansNumbersAndTextsInQuotes) {
    const SettingsFile file = ParseSettings(
        "[agent]\nCORBAAgent_Port = \"2809\"\nbLogNotify = \"true\"\nShakeHandWithOSS = 0\nEmsName = 'A/B'\n",
        "x");
    EXPECT_EQ(Findings(file), Texts());
    EXPECT_EQ(ValueOf(file, "CORBAAgent_Port"), "2809");
    EXPECT_EQ(ValueOf(file, "bLogNotify"), "1");
    EXPECT_EQ(ValueOf(file, "ShakeHandWithOSS"), "0");
    EXPECT_EQ(ValueOf(file, "EmsName"), "A/B");
}

TEST(SettingsFile, TellsLineAndKeyOfABadValueAndLeavesItOut) {
    const SettingsFile file = ParseSettings(
        "[agent]\n\nCORBAAgent_Port = 70000\nIDLVersion = 2.0\nEmsName = [1]\nTimeOut = "
        "1979-05-27\nORBThreadNum = 2\n",
        "x");
    EXPECT_TRUE(file.usable);
    EXPECT_EQ(Findings(file),
              (Texts{"3 CORBAAgent_Port|70000 is out of range, 0 to 65535|the default 12003 stays",
                     "4 IDLVersion|wants a text in quotes, not a fractional number|the default \"2.0\" stays",
                     "5 EmsName|wants a text in quotes, not a list|the default \"Zorvex/KLV\" stays",
                     "6 TimeOut|wants a whole number, not a date or time|the default 60 stays"}));
    ASSERT_EQ(file.items.size(), 1U);
    EXPECT_EQ(ValueOf(file, "ORBThreadNum"), "2");
}

TEST(SettingsFile, NamesTheNearestKeyOfAnUnknownOne) {
    const SettingsFile file =
        ParseSettings("[agent]\nNamingServicePort = 1\nwhatever_this_is = 2\n[agnet]\na=1\n", "x");
    EXPECT_EQ(Findings(file),
              (Texts{"2 NamingServicePort|is not a known key; did you mean NamingService_Port?|ignored",
                     "3 whatever_this_is|is not a known key|ignored",
                     "4 agnet|is not a known table; did you mean agent?|ignored"}));
    EXPECT_TRUE(file.items.empty());
}

TEST(SettingsFile, TellsWhereAMisplacedKeyBelongs) {
    const SettingsFile file =
        ParseSettings("SSLMode = 0\n[agent]\nlog_dir = 'x'\n[platform]\nORBThreadNum = 3\n", "x");
    EXPECT_EQ(Findings(file),
              (Texts{"1 SSLMode|belongs under [agent]|ignored", "3 log_dir|belongs under [platform]|ignored",
                     "5 ORBThreadNum|belongs under [agent]|ignored"}));
    EXPECT_TRUE(file.items.empty());
    EXPECT_TRUE(file.platform.empty());
}

TEST(SettingsFile, RefusesAValueInPlaceOfATable) {
    const SettingsFile file = ParseSettings("agent = 5\nplatform = 'x'\n", "x");
    EXPECT_EQ(Findings(file), (Texts{"1 agent|is a table of settings, not the number 5|ignored",
                                     "2 platform|is a table of settings, not a text|ignored"}));
}

TEST(SettingsFile, ReadsThePlatformsOwnSettings) {
    const SettingsFile file = ParseSettings(
        "[platform]\nlog_dir = 'logs'\nlog_level = -1\nverbose_log = true\noss_addresses = ['192.0.2.1', "
        "'oss']\n",
        "x");
    EXPECT_EQ(Findings(file), Texts());
    EXPECT_EQ(file.platform.at("log_dir"), "logs");
    EXPECT_EQ(file.platform.at("log_level"), "-1");
    EXPECT_EQ(file.platform.at("verbose_log"), "1");
    EXPECT_EQ(file.oss_addresses, (Texts{"192.0.2.1", "oss"}));
    EXPECT_TRUE(file.items.empty());
}

TEST(SettingsFile, LeavesOutBadEntriesOfAList) {
    const SettingsFile file = ParseSettings("[platform]\noss_addresses = ['a', 5,\n'', \"b\\u0000\"]\n", "x");
    EXPECT_EQ(file.oss_addresses, Texts{"a"});
    EXPECT_EQ(Findings(file),
              (Texts{"2 oss_addresses|wants texts in its list, not the number 5|that entry is left out",
                     "3 oss_addresses|holds an empty text|that entry is left out",
                     "3 oss_addresses|holds a control character (code 0)|that entry is left out"}));
    EXPECT_FALSE(ParseSettings("[platform]\noss_addresses = 'a'\n", "x").findings.empty());
}

TEST(SettingsFile, TellsTheLineOfWhatIsNotToml) {
    const SettingsFile file = ParseSettings("[agent]\nORBThreadNum = 4\nthis is no toml\n", "conf.toml");
    EXPECT_FALSE(file.usable);
    EXPECT_TRUE(file.items.empty());
    ASSERT_EQ(file.findings.size(), 1U);
    EXPECT_EQ(file.findings[0].line, 3);
    EXPECT_EQ(FindingText(file.path, file.findings[0]).rfind("conf.toml:3: is not TOML: ", 0), 0U);
}

TEST(SettingsFile, AKeyThatStandsTwiceMakesTheFileUnusable) {
    const SettingsFile file = ParseSettings("[agent]\nTimeOut = 1\nTimeOut = 2\n", "x");
    EXPECT_FALSE(file.usable);
    ASSERT_EQ(file.findings.size(), 1U);
    EXPECT_EQ(file.findings[0].line, 3);
}

TEST(SettingsFile, BearsGarbage) {
    std::mt19937 random(20240229);
    for (int round = 0; round < 300; ++round) {
        std::string contents = round % 2 == 0 ? "[agent]\nEmsName = \"" : "";
        const std::size_t length = random() % 400;
        for (std::size_t i = 0; i < length; ++i) {
            contents += static_cast<char>(random());
        }
        const SettingsFile file = ParseSettings(contents, "garbage");
        EXPECT_TRUE(file.usable || file.findings.size() == 1U);
    }
    EXPECT_FALSE(ParseSettings("a = " + std::string(100000, '['), "deep").usable);
}

TEST(SettingsFile, TellsWhyAFileCantBeRead) {
    const qv_test::TempDir dir;
    const auto problem = [](const std::string& path) {
        const SettingsFile file = ReadSettingsFile(path);
        EXPECT_FALSE(file.usable);
        return file.findings.at(0).problem;
    };
    EXPECT_EQ(problem(dir.File("none.toml")), "there is no such file");
    EXPECT_EQ(problem(dir.str()), "is not a regular file");
    EXPECT_EQ(problem("/dev/zero"), "is not a regular file");
    EXPECT_EQ(problem(dir.Write("big", std::string(1024 * 1024 + 1, '#'))),
              "is larger than 1 MiB, which no configuration file is");
    EXPECT_TRUE(ReadSettingsFile(dir.Write("good", "[agent]\nTimeOut=5\n")).usable);
}
