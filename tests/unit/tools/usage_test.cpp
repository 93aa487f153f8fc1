#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Tool {
    const char* name;
    const char* path;
};

void PrintTo(const Tool& tool, std::ostream* out) {
    *out << tool.name;
}

class Usage : public ::testing::TestWithParam<Tool> {
  protected:
    static RunResult Run(const std::string& argument) { return qv_test::Run({GetParam().path, argument}); }
};

TEST_P(Usage, VersionIsThatOfTheRelease) {
    const RunResult result = Run("--version");
    EXPECT_EQ(0, result.code) << result.err;
    EXPECT_EQ(std::string(GetParam().name) + " " QV_VERSION "\n", result.out);
}

TEST_P(Usage, HelpTellsWhatWrongUsageEndsWith) {
    const RunResult result = Run("--help");
    EXPECT_EQ(0, result.code) << result.err;
    EXPECT_THAT(result.out, HasSubstr("wrong"));
    EXPECT_THAT(result.out, HasSubstr("--version"));
}

TEST_P(Usage, AnUnknownOptionIsNamed) {
    const RunResult result = Run("--chek");
    EXPECT_EQ(2, result.code);
    EXPECT_EQ("", result.out);
    EXPECT_EQ(std::string(GetParam().name) + ": the argument \"--chek\" is unknown; see " + GetParam().name +
                  " --help\n",
              result.err);
}

INSTANTIATE_TEST_SUITE_P(Tools, Usage,
                         ::testing::Values(
#ifdef QV_SSL_TOOL
                             Tool{"qv_ssl", QV_SSL_TOOL},
#endif
                             Tool{"qv_audit", QV_AUDIT_TOOL}, Tool{"qv_config", QV_CONFIG_TOOL},
                             Tool{"qv_spans", QV_SPANS_TOOL}, Tool{"qv_user", QV_USER_TOOL}),
                         [](const auto& tool) { return std::string(tool.param.name); });

TEST(UsageOfTools, AnUnknownWordGoesAheadOfWhatIsMissing) {
    EXPECT_THAT(qv_test::Run({QV_CONFIG_TOOL, "--chek", "x"}).err, HasSubstr("\"--chek\" is unknown"));
    EXPECT_THAT(qv_test::Run({QV_USER_TOOL, "ad", "x"}).err, HasSubstr("\"ad\" is unknown"));
    EXPECT_THAT(qv_test::Run({QV_USER_TOOL, "add", "--quick"}).err, HasSubstr("\"--quick\" is unknown"));
}

TEST(UsageOfTools, WhatIsMissingIsNamed) {
    const RunResult result = qv_test::Run({QV_USER_TOOL, "remove", "users.toml"});
    EXPECT_EQ(2, result.code);
    EXPECT_THAT(result.err, StartsWith("qv_user: NAME is required; see qv_user --help"));
    EXPECT_EQ(2, qv_test::Run({QV_AUDIT_TOOL, "--limit", "many"}).code);
    EXPECT_EQ(2, qv_test::Run({QV_SPANS_TOOL, "--width", "7"}).code);
}

TEST(UsageOfTools, AUserOfAMissingDirectoryIsRefusedAheadOfThePassword) {
    const TempDir dir;
    const RunResult result = qv_test::Run({QV_USER_TOOL, "add", dir.File("none/users.toml"), "anna"});
    EXPECT_EQ(2, result.code);
    EXPECT_EQ(
        "qv_user: the directory " + dir.File("none") + " does not exist; make it, or name another file\n",
        result.err);
}

TEST(UsageOfTools, ADirectoryIsNoFileOfSpans) {
    const TempDir dir;
    const RunResult result = qv_test::Run({QV_SPANS_TOOL, dir.str()});
    EXPECT_EQ(2, result.code);
    EXPECT_EQ("qv_spans: " + dir.str() + ": this is no file\n", result.err);
}

}  // namespace
}  // namespace qv_test
