#include "services/naming/data_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "services/common/start_error.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace qv_naming {
namespace {

using qv_test::ReadFile;
using qv_test::TempDir;

class DataDirectoryTest : public ::testing::Test {
  protected:
    DataDirectory Open() { return DataDirectory(m_dir.path() / "data", std::chrono::milliseconds(0)); }
    static void Write(const std::filesystem::path& path, const std::string& text) {
        std::ofstream(path) << text;
    }

    TempDir m_dir;
};

TEST_F(DataDirectoryTest, IsHeldByOneOnly) {
    const DataDirectory first = Open();
    EXPECT_THROW(Open(), StartError);
}

TEST_F(DataDirectoryTest, IsFreeAfterwards) {
    { const DataDirectory first = Open(); }
    EXPECT_NO_THROW(Open());
}

TEST_F(DataDirectoryTest, RollsBackWhatAReplacedFileHeld) {
    DataDirectory data = Open();
    Write(data.BindingFile(), "before\n");
    data.Remember();
    std::filesystem::remove(data.BindingFile());
    Write(data.BindingFile(), "after\n");
    data.RollBack();
    EXPECT_EQ(ReadFile(data.BindingFile()), "before\n");
    data.RollBack();
    EXPECT_EQ(ReadFile(data.BindingFile()), "before\n");
}

TEST_F(DataDirectoryTest, CommitKeepsTheNewFile) {
    DataDirectory data = Open();
    Write(data.BindingFile(), "before\n");
    data.Remember();
    std::filesystem::remove(data.BindingFile());
    Write(data.BindingFile(), "after\n");
    data.Commit();
    data.RollBack();
    EXPECT_EQ(ReadFile(data.BindingFile()), "after\n");
}

TEST_F(DataDirectoryTest, RollsBackTheBackupAsWell) {
    DataDirectory data = Open();
    Write(data.BindingFile(), "damaged\n");
    Write(data.BackupFile(), "good\n");
    data.Remember();
    std::filesystem::rename(data.BindingFile(), data.BackupFile());
    Write(data.BindingFile(), "half\n");
    data.RollBack();
    EXPECT_EQ(ReadFile(data.BindingFile()), "damaged\n");
    EXPECT_EQ(ReadFile(data.BackupFile()), "good\n");
}

TEST_F(DataDirectoryTest, RollsBackToNoBackupWhereThereWasNone) {
    DataDirectory data = Open();
    Write(data.BindingFile(), "damaged\n");
    data.Remember();
    std::filesystem::rename(data.BindingFile(), data.BackupFile());
    data.RollBack();
    EXPECT_EQ(ReadFile(data.BindingFile()), "damaged\n");
    EXPECT_FALSE(std::filesystem::exists(data.BackupFile()));
}

TEST_F(DataDirectoryTest, RepairLeavesAGoodFileAlone) {
    DataDirectory data = Open();
    EXPECT_EQ(data.Repair(), "");
    Write(data.BindingFile(), "port 1\n");
    EXPECT_EQ(data.Repair(), "");
    EXPECT_EQ(ReadFile(data.BindingFile()), "port 1\n");
}

TEST(NamingDataChoice, GoesByOptionThenVariableThenReferenceFileThenStateFolder) {
    Settings settings;
    settings.port = 7;
    const qv_test::ScopedEnv state("XDG_STATE_HOME", "/state");
    {
        const qv_test::ScopedEnv none("QV_NAMING_DATA", std::nullopt);
        EXPECT_EQ(ChooseDataDirectory(settings), "/state/qv_naming/naming-7");
        settings.ior_file = "/share/bin/../ns.ior";
        EXPECT_EQ(ChooseDataDirectory(settings), "/share/naming-7");
    }
    const qv_test::ScopedEnv base("QV_NAMING_DATA", "/base");
    EXPECT_EQ(ChooseDataDirectory(settings), "/base/naming-7");
    settings.data_directory = "/given";
    EXPECT_EQ(ChooseDataDirectory(settings), "/given");
}

}  // namespace
}  // namespace qv_naming
