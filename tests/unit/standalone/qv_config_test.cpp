#include <gtest/gtest.h>
#include <json/json.h>

#include <sstream>

#include "standalone/settings_table.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

using qv_test::Run;
using qv_test::RunResult;
using qv_test::TempDir;

namespace {

RunResult Config(std::vector<std::string> args) {
    args.insert(args.begin(), QV_CONFIG_TOOL);
    return Run(args);
}

Json::Value Parse(const std::string& text) {
    Json::Value value;
    std::istringstream in(text);
    std::string errors;
    EXPECT_TRUE(Json::parseFromStream(Json::CharReaderBuilder(), in, &value, &errors)) << errors << text;
    return value;
}

}  // namespace

TEST(QvConfig, AGoodFileGivesZero) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nORBThreadNum = 8\n");
    const RunResult result = Config({"--check", path});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, path + ": 1 setting taken from the file, 0 findings\n");
    EXPECT_EQ(result.err, "");
}

TEST(QvConfig, FindingsGiveOne) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nORBThreadNum = -8\n");
    const RunResult result = Config({"--check", path});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(
        result.out.find(path + ":2: ORBThreadNum: -8 is out of range, 0 to 1024; the default 4 stays\n"),
        std::string::npos)
        << result.out;
}

TEST(QvConfig, AnUnusableFileGivesTwo) {
    const TempDir dir;
    const RunResult garbage = Config({"--check", dir.Write("a.toml", "\n\n=")});
    EXPECT_EQ(garbage.code, 2);
    EXPECT_NE(garbage.out.find("a.toml:3: is not TOML"), std::string::npos) << garbage.out;
    const RunResult missing = Config({"--check", dir.File("none")});
    EXPECT_EQ(missing.code, 2);
    EXPECT_NE(missing.out.find("there is no such file"), std::string::npos) << missing.out;
}

TEST(QvConfig, ScriptsGetJson) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nTimeOut = 5\nbLogOperaton = true\n");
    const RunResult result = Config({"--json", "--check", path});
    EXPECT_EQ(result.code, 1);
    const Json::Value json = Parse(result.out);
    EXPECT_EQ(json["file"].asString(), path);
    EXPECT_EQ(json["result"].asString(), "findings");
    EXPECT_EQ(json["settings"].asInt(), 1);
    ASSERT_EQ(json["findings"].size(), 1U);
    EXPECT_EQ(json["findings"][0]["line"].asInt(), 3);
    EXPECT_EQ(json["findings"][0]["key"].asString(), "bLogOperaton");
    EXPECT_EQ(json["findings"][0]["taken"].asString(), "ignored");
    EXPECT_EQ(Parse(Config({"--json", "--check", dir.File("none")}).out)["result"].asString(), "unusable");
}

TEST(QvConfig, TheSampleIsAGoodFile) {
    const TempDir dir;
    const RunResult sample = Config({"--sample"});
    EXPECT_EQ(sample.code, 0);
    EXPECT_EQ(Config({"--check", dir.Write("sample.toml", sample.out)}).code, 0);
}

TEST(QvConfig, ListsEverySetting) {
    const RunResult text = Config({"--list"});
    EXPECT_EQ(text.code, 0);
    const Json::Value json = Parse(Config({"--list", "--json"}).out);
    ASSERT_EQ(json.size(), qv_standalone::AllSettings().size());
    for (const auto& setting : qv_standalone::AllSettings()) {
        EXPECT_NE(text.out.find(std::string("  ") + setting.key + "  "), std::string::npos) << setting.key;
    }
    EXPECT_EQ(json[1]["key"].asString(), "ORBThreadNum");
    EXPECT_EQ(json[1]["max"].asInt(), 1024);
}

TEST(QvConfig, ThePageHasARowForEverySetting) {
    const RunResult page = Config({"--markdown"});
    EXPECT_EQ(page.code, 0);
    for (const auto& setting : qv_standalone::AllSettings()) {
        EXPECT_NE(page.out.find(std::string("\n| `") + setting.key + "` | "), std::string::npos)
            << setting.key;
    }
    EXPECT_NE(
        page.out.find("| `ORBThreadNum` | integer, 0 to 1024 threads | `4` | Size of the thread pool: "),
        std::string::npos)
        << page.out;
    EXPECT_NE(page.out.find("\n## Table `[platform]`\n"), std::string::npos) << page.out;
    // Brackets of a meaning would be taken for a link.
    EXPECT_NE(page.out.find("a table \\[risk\\] of operations"), std::string::npos) << page.out;
}

TEST(QvConfig, AsksForExactlyOneThingToDo) {
    EXPECT_EQ(Config({}).code, 2);
    EXPECT_EQ(Config({"--markdown", "--list"}).code, 2);
    EXPECT_EQ(Config({"--sample", "--list"}).code, 2);
}

TEST(QvConfig, TellsWhenItsOutputCantBeWritten) {
    const RunResult result =
        qv_test::Run({"/bin/sh", "-c", std::string(QV_CONFIG_TOOL) + " --sample > /dev/full"});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.err.find("the output can't be written"), std::string::npos) << result.err;
}
