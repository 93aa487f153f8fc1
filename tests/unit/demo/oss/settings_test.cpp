#include "demo/oss/settings.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "demo/oss/problem.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace qv_oss {
namespace {

ParsedSettings Parse(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qv_demo_oss");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return ParseSettings(static_cast<int>(arguments.size()), argv.data());
}

TEST(OssSettings, CommonOptionsMayStandBeforeAndBehindTheCommand) {
    for (const auto& parsed : {Parse({"--naming", "ns:1", "--timeout", "2.5", "browse"}),
                               Parse({"browse", "--naming", "ns:1", "--timeout", "2.5"})}) {
        ASSERT_TRUE(parsed.proceed);
        EXPECT_EQ(parsed.settings.command, Command::kBrowse);
        EXPECT_EQ(parsed.settings.naming, "ns:1");
        EXPECT_EQ(parsed.settings.timeout, std::chrono::milliseconds(2500));
    }
}

TEST(OssSettings, EachCommandHasItsOwnOptions) {
    const auto list = Parse({"list", "--user", "oss", "--page", "7"});
    ASSERT_TRUE(list.proceed);
    EXPECT_EQ(list.settings.command, Command::kList);
    EXPECT_EQ(list.settings.page, 7U);
    const auto show = Parse({"show", "NE-1", "--user", "oss"});
    ASSERT_TRUE(show.proceed);
    EXPECT_EQ(show.settings.element, "NE-1");
    const auto annotate = Parse({"annotate", "NE-1", "limit=70", "note=a=b", "--user", "oss"});
    ASSERT_TRUE(annotate.proceed);
    EXPECT_EQ(annotate.settings.command, Command::kAnnotate);
    EXPECT_EQ(annotate.settings.assignments, (std::vector<std::string>{"limit=70", "note=a=b"}));
    EXPECT_TRUE(Parse({"annotate", "NE-1", "--user", "oss"}).proceed) << "shows what there is";
}

TEST(OssSettings, EventsTakeAConditionTypesAndAnEnd) {
    const auto events = Parse({"events", "--user", "oss", "--filter", "$a == 1", "--types", "NT_ALARM,NT_TCA",
                               "--count", "7", "--seconds", "1.5"});
    ASSERT_TRUE(events.proceed);
    EXPECT_EQ(events.settings.command, Command::kEvents);
    EXPECT_EQ(events.settings.filter, "$a == 1");
    EXPECT_EQ(events.settings.types, (std::vector<std::string>{"NT_ALARM", "NT_TCA"}));
    EXPECT_EQ(events.settings.event_count, 7U);
    EXPECT_EQ(events.settings.listen_for, std::chrono::milliseconds(1500));
    const auto plain = Parse({"events", "--user", "oss"});
    ASSERT_TRUE(plain.proceed);
    EXPECT_EQ(plain.settings.filter, "");
    EXPECT_TRUE(plain.settings.types.empty());
    EXPECT_EQ(plain.settings.event_count, 0U) << "no limit";
    EXPECT_EQ(plain.settings.listen_for.count(), 0) << "no limit";
    const auto raise = Parse({"raise", "20", "--per-second", "5", "--user", "oss"});
    ASSERT_TRUE(raise.proceed);
    EXPECT_EQ(raise.settings.raise_count, 20U);
    EXPECT_EQ(raise.settings.raise_rate, 5U);
}

TEST(OssSettings, SslIsAskedForByAFile) {
    const qv_test::TempDir dir;
    const std::string profile = dir.Write("client.conf", "");
    EXPECT_EQ(Parse({"browse", "--ssl-profile", profile}).settings.ssl_profile, profile);
    EXPECT_EQ(Parse({"browse"}).settings.ssl_profile, "");
    EXPECT_EQ(Parse({"browse", "--ssl-profile", dir.File("missing")}).exit_code, kUsage);
}

TEST(OssSettings, AWrongLineIsAUsageError) {
    const std::vector<std::vector<std::string>> wrong{
        {},
        {"fly"},
        {"login"},  // no user
        {"show", "--user", "oss"},
        {"list", "--user", "oss", "--page", "0"},
        {"browse", "--timeout", "0"},
        {"browse", "--naming", "host:70000"},
        {"browse", "--ior", "/does/not/exist"},
        {"login", "--user", "oss", "--password", "x"},
        {"change-password", "--user", "oss", "--new-password", "x"},
        {"change-password", "--user", "oss", "x"},
        {"annotate", "NE-1", "limit", "--user", "oss"},
        {"set-info", "NE-1", "=70", "--user", "oss"},
        {"events"},  // no user
        {"events", "--user", "oss", "--count", "0"},
        {"events", "--user", "oss", "--seconds", "-1"},
        {"events", "--user", "oss", "more"},
        {"raise", "--user", "oss"},
        {"raise", "0", "--user", "oss"},
        {"raise", "5", "--per-second", "0", "--user", "oss"},
    };
    for (const auto& arguments : wrong) {
        const auto parsed = Parse(arguments);
        EXPECT_FALSE(parsed.proceed);
        EXPECT_EQ(parsed.exit_code, kUsage);
    }
    EXPECT_EQ(Parse({"--help"}).exit_code, kOk);
}

TEST(OssSettings, ThePasswordFileGoesBeforeTheEnvironment) {
    const qv_test::TempDir dir;
    const qv_test::ScopedEnv env("QV_OSS_PASSWORD", "from the environment");
    Settings settings;
    EXPECT_EQ(ReadPassword(settings), "from the environment");
    settings.password_file = dir.Write("password", "from the file\nand more\n");
    EXPECT_EQ(ReadPassword(settings), "from the file");
    settings.password_file = dir.File("missing");
    EXPECT_THROW(ReadPassword(settings), Problem);
    settings.password_file = dir.Write("empty", "");
    EXPECT_THROW(ReadPassword(settings), Problem);
}

TEST(OssSettings, TheNewPasswordHasAFileAndAVariableOfItsOwn) {
    const qv_test::TempDir dir;
    const qv_test::ScopedEnv old_password("QV_OSS_PASSWORD", "the old one");
    const qv_test::ScopedEnv env("QV_OSS_NEW_PASSWORD", "from the environment");
    Settings settings;
    settings.password_file = dir.Write("old", "the old one\n");
    EXPECT_EQ(ReadNewPassword(settings), "from the environment");
    settings.new_password_file = dir.Write("new", "from the file\n");
    EXPECT_EQ(ReadNewPassword(settings), "from the file");
    settings.new_password_file = dir.File("missing");
    EXPECT_THROW(ReadNewPassword(settings), Problem);
}

}  // namespace
}  // namespace qv_oss
