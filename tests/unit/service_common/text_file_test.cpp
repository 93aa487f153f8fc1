#include "services/common/text_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "services/common/start_error.h"
#include "tests/support/temp_dir.h"

namespace {

using namespace qv_service;
using namespace qv_test;
using testing::HasSubstr;
namespace fs = std::filesystem;

class TextFile : public testing::Test {
  protected:
    std::size_t Entries() const {
        const fs::directory_iterator all(dir.str());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
    const TempDir dir;
    const std::string path = dir.File("text");
    const std::string temporary = path + ".tmp" + std::to_string(getpid());
};

TEST_F(TextFile, IsMadeAndReplacedWithoutAnythingBesideIt) {
    RequireWritable(path, "a test");
    EXPECT_EQ(Entries(), 0U);
    ReplaceTextFile(path, "one\n", "a test");
    ReplaceTextFile(path, "two\n", "a test");
    EXPECT_EQ(ReadFile(path), "two\n");
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(TextFile, GetsTheRightsThatTheProcessGivesItsFiles) {
    const mode_t before = umask(027);
    ReplaceTextFile(path, "text", "a test");
    umask(before);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

TEST_F(TextFile, WritesThroughNoLinkThatSomebodyLaid) {
    const std::string other = dir.Write("other", "untouched");
    fs::create_symlink(other, temporary);
    RequireWritable(path, "a test");
    fs::create_symlink(other, temporary);
    ReplaceTextFile(path, "text", "a test");
    EXPECT_EQ(ReadFile(other), "untouched");
    EXPECT_EQ(ReadFile(path), "text");
    EXPECT_FALSE(fs::is_symlink(path));
}

TEST_F(TextFile, IsWrittenThoughAnEarlierProcessLeftItsOwnBehind) {
    dir.Write(fs::path(temporary).filename().string(), "something longer than the text");
    ReplaceTextFile(path, "text", "a test");
    EXPECT_EQ(ReadFile(path), "text");
    EXPECT_EQ(Entries(), 1U);
}

TEST_F(TextFile, SaysWhatIsInTheWayAndLeavesNothingBehind) {
    fs::create_directory(path);
    for (const auto& work : {+[](const std::string& at) { RequireWritable(at, "a test"); },
                             +[](const std::string& at) { ReplaceTextFile(at, "text", "a test"); }}) {
        try {
            work(path);
            ADD_FAILURE() << "a directory was replaced";
        } catch (const StartError& error) {
            EXPECT_EQ(error.ExitCode(), kExitFailure);
            EXPECT_THAT(error.what(), HasSubstr(path));
            EXPECT_THAT(error.what(), HasSubstr("a test"));
        }
        EXPECT_EQ(Entries(), 1U);
    }
    EXPECT_THROW(ReplaceTextFile(dir.File("none/text"), "text", "a test"), StartError);
}

TEST_F(TextFile, NamesTheFolderThatNothingCanBeMadeIn) {
    RequireWritableFolder(dir.str(), "a test");
    EXPECT_EQ(Entries(), 0U);
    try {
        RequireWritableFolder(dir.File("none"), "a test");
        ADD_FAILURE() << "a file was made in a folder that isn't there";
    } catch (const StartError& error) {
        EXPECT_EQ(error.ExitCode(), kExitFailure);
        EXPECT_THAT(error.what(),
                    HasSubstr("The folder " + dir.File("none") + " for a test cannot be written: "));
        EXPECT_THAT(error.what(), Not(HasSubstr("probe")));
    }
}

}  // namespace
