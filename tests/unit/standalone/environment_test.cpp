#include "platform/environment.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/config_items.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

using NS_BUNDLEMGR1::GetCfgDirPath;
using NS_BUNDLEMGR1::GetNBILogPath;
using NS_BUNDLEMGR1::GetXDENEnvironment;
using qv_test::ScopedEnv;
using qv_test::TempDir;

namespace {

class EnvironmentTest : public testing::Test {
  protected:
    ScopedEnv m_file{"QV_AGENT_CONFIG", std::nullopt};
    ScopedEnv m_root{"QV_ENV_ROOT", std::nullopt};
    ScopedEnv m_cfg{"QV_CFG_DIR", std::nullopt};
    ScopedEnv m_log{"QV_LOG_DIR", std::nullopt};
    TempDir m_dir;
};

}  // namespace

TEST_F(EnvironmentTest, RootAndConfigurationDirectoryAreEmptyWhenNotSet) {
    const qv_test::ScopedConfigItems noFile;
    EXPECT_EQ(GetXDENEnvironment(), "");
    EXPECT_EQ(GetCfgDirPath(), "");
}

TEST_F(EnvironmentTest, TheEnvironmentNamesThePlaces) {
    const qv_test::ScopedConfigItems noFile;
    const ScopedEnv root("QV_ENV_ROOT", "/opt/root//");
    const ScopedEnv cfg("QV_CFG_DIR", "/etc/agent");
    const ScopedEnv log("QV_LOG_DIR", m_dir.File("new/log"));
    EXPECT_EQ(GetXDENEnvironment(), "/opt/root");
    EXPECT_EQ(GetCfgDirPath(), "/etc/agent");
    EXPECT_EQ(GetNBILogPath(), m_dir.File("new/log"));
    EXPECT_TRUE(std::filesystem::is_directory(m_dir.File("new/log")));
}

TEST_F(EnvironmentTest, TheFileNamesThePlaces) {
    const ScopedEnv file("QV_AGENT_CONFIG", m_dir.Write("etc/a.toml",
                                                        "[platform]\nenv_root='../root'\ncfg_dir='/c'\n"
                                                        "log_dir='logs'\n"));
    EXPECT_EQ(GetXDENEnvironment(), m_dir.File("root"));
    EXPECT_EQ(GetCfgDirPath(), "/c");
    EXPECT_EQ(GetNBILogPath(), m_dir.File("etc/logs"));
    EXPECT_TRUE(std::filesystem::is_directory(m_dir.File("etc/logs")));
}

TEST_F(EnvironmentTest, TheEnvironmentGoesBeforeTheFileAndAnEmptyValueCountsAsNotSet) {
    const ScopedEnv file("QV_AGENT_CONFIG", m_dir.Write("a.toml", "[platform]\nenv_root='/from/file'\n"));
    {
        const ScopedEnv root("QV_ENV_ROOT", "/from/environment");
        EXPECT_EQ(GetXDENEnvironment(), "/from/environment");
    }
    const ScopedEnv root("QV_ENV_ROOT", "");
    EXPECT_EQ(GetXDENEnvironment(), "/from/file");
}

TEST_F(EnvironmentTest, ALogDirectoryThatCantBeMadeIsNamedAllTheSame) {
    const qv_test::ScopedConfigItems noFile;
    const std::string inTheWay = m_dir.Write("file", "");
    const ScopedEnv log("QV_LOG_DIR", inTheWay + "/log");
    EXPECT_EQ(GetNBILogPath(), inTheWay + "/log");
}
