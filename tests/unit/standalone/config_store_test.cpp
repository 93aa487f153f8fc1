#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/corba_config_items.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

using NS_BUNDLEMGR1::CorbaConfigItems;
using NS_BUNDLEMGR1::NameValueStru;
using qv_test::ScopedEnv;
using qv_test::TempDir;

namespace {

/// What the store delivers for EmsName, and what it says meanwhile on the standard error.
struct Read {
    std::string ems_name = "(absent)";
    std::string said;
};

Read ReadStore() {
    Read read;
    std::vector<NameValueStru> items;
    testing::internal::CaptureStderr();
    CorbaConfigItems::Instance()->GetCorbaConfigItems(items);
    read.said = testing::internal::GetCapturedStderr();
    NS_BUNDLEMGR1::GetValByKey(read.ems_name, "EmsName", items);
    return read;
}

bool Holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(ConfigStore, WithoutAnyFileItSaysSoOnceAndIsEmpty) {
    const TempDir dir;
    const ScopedEnv other("QV_AGENT_CONFIG", dir.Write("x.toml", ""));
    ReadStore();
    const ScopedEnv file("QV_AGENT_CONFIG", std::nullopt);
    const ScopedEnv directory("QV_CFG_DIR", std::nullopt);
    const Read first = ReadStore();
    EXPECT_EQ(first.ems_name, "(absent)");
    EXPECT_TRUE(Holds(first.said, "no configuration file: set QV_AGENT_CONFIG")) << first.said;
    EXPECT_EQ(ReadStore().said, "");
}

TEST(ConfigStore, FindsTheFileInTheConfigurationDirectory) {
    const TempDir dir;
    dir.Write("corba_agent.toml", "[agent]\nEmsName='by directory'\n");
    const ScopedEnv file("QV_AGENT_CONFIG", std::nullopt);
    const ScopedEnv directory("QV_CFG_DIR", dir.str());
    EXPECT_EQ(ReadStore().ems_name, "by directory");
    const ScopedEnv named("QV_AGENT_CONFIG", dir.Write("other.toml", "[agent]\nEmsName='by name'\n"));
    EXPECT_EQ(ReadStore().ems_name, "by name");
}

TEST(ConfigStore, SaysWhatIsWrongOncePerChange) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nEmsName='A'\nTimeOut='soon'\nTimeOt=3\n");
    const ScopedEnv env("QV_AGENT_CONFIG", path);
    const Read first = ReadStore();
    EXPECT_EQ(first.ems_name, "A");
    EXPECT_TRUE(Holds(first.said, path + ":3: TimeOut: \"soon\" is not a whole number; the default 60 stays"))
        << first.said;
    EXPECT_TRUE(Holds(first.said, path + ":4: TimeOt: is not a known key; did you mean TimeOut?; ignored"))
        << first.said;
    EXPECT_EQ(ReadStore().said, "");
}

TEST(ConfigStore, ReadsAChangedFileAgain) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG", dir.Write("a.toml", "[agent]\nEmsName='before'\n"));
    EXPECT_EQ(ReadStore().ems_name, "before");
    dir.Write("a.toml", "[agent]\nEmsName='afterwards'\n");
    EXPECT_EQ(ReadStore().ems_name, "afterwards");
}

TEST(ConfigStore, GarbageLeavesItEmpty) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nEmsName='A'\n\x01\x02 garbage");
    const ScopedEnv env("QV_AGENT_CONFIG", path);
    const Read read = ReadStore();
    EXPECT_EQ(read.ems_name, "(absent)");
    EXPECT_TRUE(Holds(read.said, path + ":3: is not TOML")) << read.said;
    EXPECT_TRUE(Holds(read.said, "the defaults of all settings are in force")) << read.said;
}

TEST(ConfigStore, AFileThatHasBecomeUnusableLeavesTheFormerInForce) {
    const TempDir dir;
    const std::string path = dir.Write("a.toml", "[agent]\nEmsName='good'\n");
    const ScopedEnv env("QV_AGENT_CONFIG", path);
    EXPECT_EQ(ReadStore().ems_name, "good");
    dir.Write("a.toml", "[agent\n");
    const Read broken = ReadStore();
    EXPECT_EQ(broken.ems_name, "good");
    EXPECT_TRUE(Holds(broken.said, "the configuration that was read before stays in force")) << broken.said;
    std::filesystem::remove(path);
    const Read gone = ReadStore();
    EXPECT_EQ(gone.ems_name, "good");
    EXPECT_TRUE(Holds(gone.said, path + ": there is no such file")) << gone.said;
    dir.Write("a.toml", "[agent]\nEmsName='repaired'\n");
    EXPECT_EQ(ReadStore().ems_name, "repaired");
}

TEST(ConfigStore, AMissingFileIsSaid) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG", dir.File("none.toml"));
    const Read read = ReadStore();
    EXPECT_EQ(read.ems_name, "(absent)");
    EXPECT_TRUE(Holds(read.said, dir.File("none.toml") + ": there is no such file")) << read.said;
}

TEST(ConfigStore, BearsReadersWhileTheFileChanges) {
    const TempDir dir;
    const ScopedEnv env("QV_AGENT_CONFIG", dir.Write("a.toml", "[agent]\nEmsName='A'\n"));
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                std::vector<NameValueStru> items;
                CorbaConfigItems::Instance()->GetCorbaConfigItems(items);
                wrong += items.size() == 1 && items[0].value[0] == 'A' ? 0 : 1;
            }
        });
    }
    for (int i = 0; i < 100; ++i) {
        dir.Write("next.toml", "[agent]\nEmsName='A" + std::string(static_cast<std::size_t>(i), 'x') + "'\n");
        std::filesystem::rename(dir.File("next.toml"), dir.File("a.toml"));
    }
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
