#include "services/notify/program/data_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "services/common/start_error.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using qv_notify::ChooseDataDirectory;
using qv_notify::PrepareStoreFile;
using qv_notify::Settings;
using qv_service::StartError;
using qv_test::ScopedEnv;
using qv_test::TempDir;

class NotifyDataDirectory : public testing::Test {
  protected:
    NotifyDataDirectory() { settings.port = 3001; }
    Settings settings;
    const ScopedEnv data{"QV_NOTIFY_DATA", std::nullopt};
    const ScopedEnv state{"XDG_STATE_HOME", std::nullopt};
    const ScopedEnv home{"HOME", std::nullopt};
};

TEST_F(NotifyDataDirectory, IsWhatWasGiven) {
    const ScopedEnv ignored("QV_NOTIFY_DATA", "/elsewhere");
    settings.data_directory = "/given/./here";
    EXPECT_EQ(ChooseDataDirectory(settings), "/given/here");
    settings.data_directory = "here";
    EXPECT_EQ(ChooseDataDirectory(settings), fs::current_path() / "here");
}

TEST_F(NotifyDataDirectory, ComesFromTheFirstThatIsSet) {
    const ScopedEnv at_home("HOME", "/home/me");
    EXPECT_EQ(ChooseDataDirectory(settings), "/home/me/.local/state/qv_notify/notify-3001");
    const ScopedEnv of_state("XDG_STATE_HOME", "/state");
    EXPECT_EQ(ChooseDataDirectory(settings), "/state/qv_notify/notify-3001");
    settings.ior_file = "/run/ns.ior";
    EXPECT_EQ(ChooseDataDirectory(settings), "/run/notify-3001");
    const ScopedEnv of_data("QV_NOTIFY_DATA", "/data");
    EXPECT_EQ(ChooseDataDirectory(settings), "/data/notify-3001");
}

TEST_F(NotifyDataDirectory, IsAskedForWhenNothingIsSet) {
    try {
        ChooseDataDirectory(settings);
        FAIL();
    } catch (const StartError& error) {
        EXPECT_EQ(error.ExitCode(), qv_service::kExitUsage);
        EXPECT_THAT(error.what(), testing::HasSubstr("-u"));
    }
}

TEST_F(NotifyDataDirectory, IsMadeForItsOwnerAlone) {
    const TempDir dir;
    const fs::path directory = dir.path() / "a" / "b";
    EXPECT_EQ(PrepareStoreFile(directory), directory / "notify.db");
    struct stat status {};
    ASSERT_EQ(stat(directory.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    EXPECT_TRUE(fs::is_empty(directory)) << "nothing is left of trying";
}

TEST_F(NotifyDataDirectory, KeepsTheRightsOfOneThatIsThere) {
    const TempDir dir;
    ASSERT_EQ(chmod(dir.str().c_str(), 0750), 0);
    PrepareStoreFile(dir.path());
    struct stat status {};
    ASSERT_EQ(stat(dir.str().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
}

TEST_F(NotifyDataDirectory, IsRefusedWhereThereIsAFile) {
    const TempDir dir;
    const std::string file = dir.Write("file", "text");
    for (const std::string& path : {file, file + "/below"}) {
        EXPECT_THROW(PrepareStoreFile(path), StartError) << path;
    }
    EXPECT_EQ(qv_test::ReadFile(file), "text");
}

}  // namespace
