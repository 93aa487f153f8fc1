// What the operator is told about a store that can't be used, and that a full disk costs nothing but time.

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "services/notify/store/store.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace {

using qv_notify::Store;
using qv_notify::StoreError;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class StoreDamage : public ::testing::Test {
  protected:
    std::string path() const { return m_dir.File("events.db"); }
    const qv_test::TempDir& dir() const { return m_dir; }

    /// A store with some hundred events.
    void MakeStore() {
        Store store(path());
        store.Put("c1", "channel");
        for (int i = 0; i < 300; ++i) {
            store.AddEvent("c1", "", std::string(1000, 'x'), {});
        }
    }

    std::string ErrorOfOpening() const {
        try {
            Store store(path());
            store.Objects();
            store.Events();
        } catch (const StoreError& error) {
            return error.what();
        }
        return "";
    }

    void Execute(const std::string& sql) const {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(path().c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(db);
    }

  private:
    const qv_test::TempDir m_dir;
};

TEST_F(StoreDamage, AnEmptyFileIsANewStore) {
    dir().Write("events.db", "");
    EXPECT_EQ(ErrorOfOpening(), "");
}

TEST_F(StoreDamage, GarbageIsNoStore) {
    dir().Write("events.db", std::string(10'000, 'g'));
    EXPECT_THAT(ErrorOfOpening(), AllOf(StartsWith("The store " + path() + " can't be opened: "),
                                        HasSubstr("Put a sound copy in its place, or move it away")));
    EXPECT_EQ(qv_test::ReadFile(path()), std::string(10'000, 'g'));
}

TEST_F(StoreDamage, ATruncatedFileIsNoticed) {
    MakeStore();
    const auto whole = std::filesystem::file_size(path());
    for (const std::uintmax_t size : {whole - 1, whole - 4096, whole / 2, std::uintmax_t{5000}}) {
        std::filesystem::resize_file(path(), size);
        EXPECT_THAT(ErrorOfOpening(), HasSubstr("Put a sound copy in its place")) << size;
    }
}

TEST_F(StoreDamage, DamageInTheMiddleNeverEndsTheProcess) {
    MakeStore();
    const std::string sound = qv_test::ReadFile(path());
    int noticed = 0;
    int damages = 0;
    for (std::size_t at = 16; at < sound.size(); at += 2999) {
        std::string damaged = sound;
        damaged.replace(at, 8, "\xff\x00\xff\x7f\x80\x01\xfe\xff", 8);
        dir().Write("events.db", damaged);
        noticed += ErrorOfOpening().empty() ? 0 : 1;
        ++damages;
    }
    EXPECT_GT(noticed, damages / 2);  // the rest is free room
}

TEST_F(StoreDamage, AMissingTableIsDamage) {
    MakeStore();
    Execute("DROP TABLE digests");
    EXPECT_THAT(ErrorOfOpening(), StartsWith("The store " + path() + " can't be opened: no such table"));
}

TEST_F(StoreDamage, TheDatabaseOfSomethingElseIsLeftAlone) {
    Execute("CREATE TABLE addresses(name); INSERT INTO addresses VALUES('Ann')");
    const std::string before = qv_test::ReadFile(path());
    EXPECT_EQ(ErrorOfOpening(),
              "The file " + path() + " is the database of something else. Name another file for the store.");
    EXPECT_EQ(qv_test::ReadFile(path()), before);
}

TEST_F(StoreDamage, ANewerVersionIsLeftAlone) {
    MakeStore();
    Execute("PRAGMA user_version = 2");
    EXPECT_EQ(ErrorOfOpening(), "The store " + path() +
                                    " has the version 2, and this service knows 1 at most. Start the newer "
                                    "service, or name another file.");
}

TEST_F(StoreDamage, AFolderOrNoFolderIsNoStore) {
    EXPECT_THROW(Store(dir().File("none/events.db")), StoreError);
    std::filesystem::create_directory(path());
    EXPECT_EQ(ErrorOfOpening(), "The store " + path() +
                                    " can't be opened: Is a directory. Let the user of the service write it "
                                    "and its folder.");
}

TEST_F(StoreDamage, OneProcessAtATimeUsesIt) {
    const Store store(path());
    const std::string expected = "The store " + path() +
                                 " can't be used: another process has it open. End that process, or name "
                                 "another file.";
    EXPECT_EQ(ErrorOfOpening(), expected);
    const qv_test::RunResult other = qv_test::Run({STORE_CHILD, "open", path()});
    EXPECT_EQ(other.code, 1);
    EXPECT_EQ(other.out, expected + "\n");
}

TEST_F(StoreDamage, AFileThatMayNotBeWrittenIsRefused) {
    MakeStore();
    std::filesystem::permissions(dir().path(), std::filesystem::perms(0755));
    for (const mode_t mode : {0444U, 0400U}) {
        ASSERT_EQ(chmod(path().c_str(), mode), 0);
        ASSERT_EQ(chmod((path() + ".lock").c_str(), 0666), 0);  // so that the file itself is what fails
        const qv_test::RunResult child = qv_test::Run({STORE_CHILD, "nobody", path()});
        EXPECT_EQ(child.code, 1) << child.err;
        EXPECT_THAT(child.out,
                    AllOf(StartsWith("The store " + path() + " can't be opened: Permission denied"),
                          HasSubstr("Let the user of the service write it and its folder.")));
    }
}

TEST_F(StoreDamage, AFullDiskIsToldAndOutlived) {
    const qv_test::RunResult child = qv_test::Run({STORE_CHILD, "fill", path()});
    ASSERT_EQ(child.code, 0) << child.out << child.err;
    const std::string sentence = "The store " + path() + " can't be used: ";
    EXPECT_THAT(child.out, StartsWith(sentence));
    int added = 0;
    int kept = 0;
    const std::size_t at = child.out.find("added ");
    ASSERT_EQ(std::sscanf(child.out.c_str() + at, "added %d kept %d", &added, &kept), 2) << child.out;
    EXPECT_GT(added, 10);
    EXPECT_EQ(added, kept);
    EXPECT_THAT(child.out.substr(at), HasSubstr(sentence));
    EXPECT_THAT(child.out, HasSubstr("after " + std::to_string(added + 1) + " after\n"));
    EXPECT_EQ(Store(path()).Events().size(), static_cast<std::size_t>(added) + 1);
}

TEST_F(StoreDamage, AFullDiskIsToldWhenOpening) {
    const qv_test::RunResult child = qv_test::Run({STORE_CHILD, "open_when_full", path()});
    EXPECT_EQ(child.code, 1) << child.err;
    EXPECT_THAT(child.out, StartsWith("The store " + path() + " can't be opened: "));
    EXPECT_EQ(ErrorOfOpening(), "");
}

}  // namespace
