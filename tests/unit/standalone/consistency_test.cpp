#include "standalone/consistency.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "standalone/settings_file.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

using qv_standalone::ParseSettings;

namespace {

std::vector<std::string> Problems(const std::string& agent) {
    std::vector<std::string> texts;
    for (const auto& finding : ParseSettings("[agent]\n" + agent, "x").findings) {
        texts.push_back(std::to_string(finding.line) + " " + finding.key + " " + finding.problem);
    }
    return texts;
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(Consistency, TheDefaultsFitTogether) {
    EXPECT_EQ(Problems(""), Texts());
}

TEST(Consistency, NamesAPortThatTwoProcessesTake) {
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\n"),
              Texts{"2 CORBAAgent_Port port 12001 is also the one of NamingService_Port"});
    EXPECT_EQ(Problems("NamingService_Port = 12003\n"),
              Texts{"2 NamingService_Port port 12003 is also the one of CORBAAgent_Port"});
}

TEST(Consistency, ThePortsOfOtherHostsAreFree) {
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\nNamingService_Host = 'other'\n"), Texts());
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\nNamingService_Host = '127.0.0.1'\n").size(), 1U);
}

TEST(Consistency, SslPortsCountWithSslOnly) {
    EXPECT_EQ(Problems("NotifyService_SSLPort = 22001\n"), Texts());
    EXPECT_EQ(
        Problems(
            "SSLMode = 1\nSSL_Profile = 'f'\nNotifyService_SSLPort = 22001\nCORBAAgent_SSLPort = 22003\n"),
        Texts{"4 NotifyService_SSLPort port 22001 is also the one of NamingService_SSLPort"});
}

TEST(Consistency, SslNeedsItsProfile) {
    EXPECT_EQ(Problems("SSLMode = 1\nCORBAAgent_SSLPort = 22003\n"),
              Texts{"2 SSLMode SSL is on, but SSL_Profile names no file with key and certificate"});
    EXPECT_EQ(Problems("SSLMode = 1\nSSL_Profile = 'f'\nCORBAAgent_SSLPort = 22003\n"), Texts());
}

TEST(Consistency, SslNeedsAPortThatStays) {
    const std::string problem =
        " CORBAAgent_SSLPort SSL is on, but this port is 0, so the agent takes another one at each start and "
        "references that OSSs keep lead nowhere";
    EXPECT_EQ(Problems("SSLMode = 1\nSSL_Profile = 'f'\n"), Texts{"2" + problem});
    EXPECT_EQ(Problems("SSLMode = 1\nSSL_Profile = 'f'\nCORBAAgent_SSLPort = 0\n"), Texts{"4" + problem});
    EXPECT_EQ(Problems("CORBAAgent_SSLPort = 0\n"), Texts());
}

TEST(Consistency, AServiceToBeStartedHasToBeWhereItIsLookedFor) {
    const qv_test::TempDir dir;
    const qv_test::ScopedEnv unset("QV_ENV_ROOT", std::nullopt);
    std::filesystem::create_directory(dir.File("root"));
    const std::string file = dir.File("agent.toml");
    const std::string contents =
        "[agent]\nNamingService_AutoStart = true\nNotifyService_AutoStart = false\n[platform]\nenv_root = "
        "'root'\n";

    const auto findings = ParseSettings(contents, file).findings;
    ASSERT_EQ(findings.size(), 1U);
    const std::string program = dir.File("cbb/nbi/nbicbb_3p/share/bin/Naming_Service");
    EXPECT_EQ(findings[0].line, 2);
    EXPECT_EQ(findings[0].key, "NamingService_AutoStart");
    EXPECT_EQ(findings[0].problem, "the agent can't start " + program + ": there is no such program");

    dir.Write("cbb/nbi/nbicbb_3p/share/bin/Naming_Service", "");
    EXPECT_EQ(ParseSettings(contents, file).findings.size(), 1U);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    EXPECT_TRUE(ParseSettings(contents, file).findings.empty());
    const qv_test::ScopedEnv elsewhere("QV_ENV_ROOT", dir.File("none"));
    EXPECT_EQ(ParseSettings(contents, file).findings.size(), 1U);
}
