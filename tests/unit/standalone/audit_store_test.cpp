#include "standalone/audit_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "platform/bundle_mgr.h"
#include "standalone/registry.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using qv_standalone::AuditStore;
using qv_test::TempDir;
using testing::HasSubstr;

namespace {

/// The rows of a query, columns divided by "|", rows by line ends; "error: ..." when it fails.
std::string Query(const std::string& path, const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    std::string rows;
    const auto add = [](void* out, int count, char** values, char**) {
        std::string& text = *static_cast<std::string*>(out);
        for (int i = 0; i < count; ++i) {
            text += std::string(i == 0 ? "" : "|") + (values[i] == nullptr ? "null" : values[i]);
        }
        text += "\n";
        return 0;
    };
    if (sqlite3_exec(db, sql.c_str(), add, &rows, nullptr) != SQLITE_OK) {
        rows = std::string("error: ") + sqlite3_errmsg(db);
    }
    sqlite3_close(db);
    return rows;
}

class AuditStoreTest : public testing::Test {
  protected:
    std::string Rows() { return Query(m_path, "SELECT operName, result, detail FROM audit ORDER BY id"); }
    void Begin(unsigned long id, const std::string& operation) {
        m_store.BeginAudit(id, {{"operName", operation}, {"nmsAddress", "192.0.2.1"}});
    }

    TempDir m_dir;
    std::string m_path = m_dir.File("sub/audit.db");
    std::chrono::steady_clock::time_point m_now{1000s};
    std::string m_told;
    AuditStore m_store{m_path, [this](const std::string& text) { m_told += text + "\n"; },
                       [this] { return m_now; }};
};

}  // namespace

TEST_F(AuditStoreTest, ShowsAnOperationWithItsEnd) {
    m_store.BeginAudit(
        7, {{"operName", "setTPData"}, {"strInfo", "a'b"}, {"riskLevel", "RISK"}, {"extra", "more"}});
    EXPECT_EQ(Query(m_path, "SELECT request_id, operName, nmsAddress, strInfo, riskLevel, end_ms FROM audit"),
              "7|setTPData|null|a'b|RISK|null\n");
    EXPECT_EQ(Query(m_path, "SELECT begun_id, name, value FROM further"), "1|extra|more\n");
    m_store.EndAudit(7, 1, "failed");
    EXPECT_EQ(Query(m_path, "SELECT result, detail, end_ms >= begin_ms FROM audit"), "1|failed|1\n");
}

TEST_F(AuditStoreTest, AnEndBelongsToTheNewestOpenOneOfItsThread) {
    Begin(1, "first");
    Begin(1, "second");
    std::thread([this] {
        m_store.EndAudit(1, 0, "of nobody");
        Begin(1, "other");
        m_store.EndAudit(1, 0, "of other");
    }).join();
    m_store.EndAudit(1, 0, "of second");
    EXPECT_EQ(Rows(), "first|null|null\nsecond|0|of second\nother|0|of other\n");
    m_store.EndAudit(1, 0, "of first");
    m_store.EndAudit(1, 0, "of nobody");
    EXPECT_EQ(Rows(), "first|0|of first\nsecond|0|of second\nother|0|of other\n");
}

TEST_F(AuditStoreTest, RefusesChanges) {
    Begin(1, "a");
    m_store.EndAudit(1, 0, "");
    for (const char* sql : {"UPDATE begun SET operName=''", "DELETE FROM begun", "UPDATE ended SET result=1",
                            "DELETE FROM ended"}) {
        EXPECT_THAT(Query(m_path, sql), HasSubstr("the audit is append-only")) << sql;
    }
}

TEST_F(AuditStoreTest, AnOperationUnderWayOutlivesAKill) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        Begin(3, "modifyPassword");
        (void)!write(ready[1], "x", 1);
        pause();
        _exit(0);
    }
    close(ready[1]);
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(Rows(), "modifyPassword|null|null\n");
}

TEST_F(AuditStoreTest, ADamagedFileIsToldOnceCountedAndReplacedWhenMovedAway) {
    m_dir.Write("sub/audit.db", std::string(8192, 'x'));
    Begin(1, "a");
    m_store.EndAudit(1, 0, "");
    m_now += 2s;
    Begin(2, "b");
    EXPECT_EQ(m_store.Lost(), 3U);
    EXPECT_THAT(m_told, HasSubstr("can't be written (file is not a database)"));
    EXPECT_EQ(std::count(m_told.begin(), m_told.end(), '\n'), 1);
    std::filesystem::remove(m_path);
    Begin(3, "soon");  // not yet time for another look
    EXPECT_EQ(m_store.Lost(), 4U);
    m_now += 2s;
    Begin(4, "c");
    m_store.EndAudit(2, 0, "");  // its beginning is lost
    EXPECT_EQ(Rows(), "c|null|null\n");
    EXPECT_THAT(m_told, HasSubstr("is written again; 4 row(s) were lost"));
}

TEST_F(AuditStoreTest, ALockedFileHoldsNobodyUpForLong) {
    Begin(1, "a");
    sqlite3* other = nullptr;
    sqlite3_open(m_path.c_str(), &other);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto begin = std::chrono::steady_clock::now();
    for (unsigned long id = 2; id < 100; ++id) {
        Begin(id, "b");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    EXPECT_EQ(m_store.Lost(), 98U);
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    m_now += 2s;
    m_store.EndAudit(1, 0, "done");
    EXPECT_EQ(Rows(), "a|0|done\n");
    EXPECT_THAT(m_told, HasSubstr("database is locked"));
}

TEST_F(AuditStoreTest, AFileThatWasMovedAwayIsMadeAnew) {
    Begin(1, "a");
    std::filesystem::remove_all(m_dir.File("sub"));
    m_now += 2s;
    Begin(2, "b");
    EXPECT_EQ(Rows(), "b|null|null\n");
}

TEST_F(AuditStoreTest, AFileMovedAwayAloneIsWholeAndItsOperationsDoNotEndInTheNextOne) {
    Begin(1, "first");
    Begin(2, "second");
    m_store.EndAudit(2, 0, "done");
    const std::string former = m_dir.File("former.db");
    std::filesystem::rename(m_path, former);
    m_now += 2s;
    Begin(3, "third");
    m_store.EndAudit(1, 1, "of first");
    EXPECT_EQ(Query(former, "SELECT operName, result FROM audit"), "first|null\nsecond|0\n");
    EXPECT_EQ(Rows(), "third|null|null\n");
    EXPECT_EQ(m_store.Lost(), 1U);
    EXPECT_EQ(m_told, "");
}

class AuditFileMovedUnderAnOperation : public AuditStoreTest, public testing::WithParamInterface<bool> {};

TEST_P(AuditFileMovedUnderAnOperation, ItsEndIsNotThatOfAnOperationInTheNextFile) {
    Begin(1, "first");
    const std::string former = m_dir.File("former.db");
    std::filesystem::rename(m_path, former);
    m_now += 2s;
    if (GetParam()) {
        m_store.Tend();
    }
    m_store.EndAudit(1, 1, "of first");
    Begin(2, "second");
    EXPECT_EQ(Rows(), "second|null|null\n");
    m_store.EndAudit(2, 0, "of second");
    EXPECT_EQ(Rows(), "second|0|of second\n");
    EXPECT_EQ(Query(former, "SELECT operName, result FROM audit"), "first|null\n");
    EXPECT_EQ(m_store.Lost(), 1U);
    EXPECT_EQ(m_told, "");
}

INSTANTIATE_TEST_SUITE_P(FoundBy, AuditFileMovedUnderAnOperation, testing::Bool(),
                         [](const auto& tended) { return std::string(tended.param ? "Tend" : "TheEnd"); });

TEST_F(AuditStoreTest, AnEndThatFindsTheFileDamagedIsTheEndOfItsOperationAllTheSame) {
    Begin(1, "outer");
    Begin(1, "inner");
    std::filesystem::remove_all(m_dir.File("sub"));
    m_dir.Write("sub", "no directory");
    m_now += 2s;
    m_store.EndAudit(1, 0, "of inner");
    EXPECT_THAT(m_told, HasSubstr("can't be written"));
    std::filesystem::remove(m_dir.File("sub"));
    m_now += 2s;
    Begin(2, "next");
    m_store.EndAudit(1, 0, "of outer");
    m_store.EndAudit(1, 0, "of nobody");
    EXPECT_EQ(Rows(), "next|null|null\n");
    EXPECT_EQ(m_store.Lost(), 2U);
}

TEST_F(AuditStoreTest, AFileMovedAwayIsWholeWithoutAnotherOperation) {
    Begin(1, "first");
    const std::string former = m_dir.File("former.db");
    std::filesystem::rename(m_path, former);
    m_store.Tend();
    EXPECT_EQ(Query(former, "SELECT operName FROM audit"), "first\n");
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(AuditStoreTest, AFileMovedAwayFromAReaderIsCompletedWhenTheReaderIsDone) {
    Begin(1, "first");
    sqlite3* reader = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &reader), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(reader, "BEGIN; SELECT count(*) FROM audit", nullptr, nullptr, nullptr),
              SQLITE_OK);
    Begin(2, "second");
    const std::string former = m_dir.File("former.db");
    std::filesystem::rename(m_path, former);
    m_now += 2s;
    Begin(3, "third");
    EXPECT_FALSE(std::filesystem::exists(m_path)) << "a new file would take the rows in the log away";
    sqlite3_close(reader);
    m_now += 2s;
    Begin(4, "fourth");
    EXPECT_EQ(Query(former, "SELECT operName FROM audit"), "first\nsecond\nthird\n");
    EXPECT_EQ(Rows(), "fourth|null|null\n");
    EXPECT_EQ(m_store.Lost(), 0U);
}

TEST_F(AuditStoreTest, ALongLogIsShortenedWhileItIsWritten) {
    m_store.Tend();  // nothing is open yet
    Begin(1, "a");
    const auto size = std::filesystem::file_size(m_path);
    m_store.Tend();
    EXPECT_EQ(std::filesystem::file_size(m_path), size) << "a short log stays";
    const std::string megabyte(1 << 20, 'i');
    for (unsigned long id = 2; id < 20; ++id) {
        m_store.BeginAudit(id, {{"operName", "b"}, {"strInfo", megabyte}});
    }
    EXPECT_EQ(std::filesystem::file_size(m_path), size);
    m_store.Tend();
    EXPECT_GT(std::filesystem::file_size(m_path), 18U << 20U);
    const auto log = std::filesystem::file_size(m_path + "-wal");
    Begin(20, "c");
    EXPECT_EQ(std::filesystem::file_size(m_path + "-wal"), log) << "it is used again from its beginning";
    EXPECT_EQ(Query(m_path, "SELECT count(*), sum(length(strInfo)) FROM audit"), "20|18874368\n");
    EXPECT_EQ(m_store.Lost(), 0U);
}

TEST_F(AuditStoreTest, ManyThreadsMayAuditWhileTheLogIsShortened) {
    const std::string info(65536, 'i');
    std::atomic<int> running{4};
    std::vector<std::thread> threads;
    for (unsigned long thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (unsigned long id = 0; id < 100; ++id) {
                m_store.BeginAudit(id, {{"operName", std::to_string(thread)}, {"strInfo", info}});
                m_store.EndAudit(id, 0, std::to_string(thread));
            }
            --running;
        });
    }
    while (running > 0) {
        m_store.Tend();
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(m_store.Lost(), 0U) << m_told;
    EXPECT_EQ(Query(m_path, "SELECT count(*), sum(operName = detail) FROM audit"), "400|400\n");
    EXPECT_EQ(Query(m_path, "PRAGMA integrity_check"), "ok\n");
}

TEST_F(AuditStoreTest, CostOfARow) {
    constexpr unsigned long kRows = 2000;
    std::vector<double> microseconds;
    for (unsigned long id = 0; id < kRows; ++id) {
        const auto begin = std::chrono::steady_clock::now();
        Begin(id, "setTPData");
        m_store.EndAudit(id, 0, "");
        const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - begin;
        microseconds.push_back(took.count());
    }
    std::sort(microseconds.begin(), microseconds.end());
    std::printf("BeginAudit and EndAudit: median %.1f us, 99 of 100 within %.1f us\n",
                microseconds[kRows / 2], microseconds[kRows * 99 / 100]);
    EXPECT_EQ(Query(m_path, "SELECT count(*) FROM audit WHERE result = 0"), "2000\n");
    EXPECT_EQ(m_store.Lost(), 0U);
}

TEST(AuditService, IsAlwaysOffered) {
    const auto objects =
        NS_BUNDLEMGR1::BundleMgr::Instance()->GetBundle(qv_standalone::kPlatformBundle)->GetServiceObjects();
    ASSERT_EQ(objects.count(qv_standalone::kAuditService), 1U);
    EXPECT_NE(dynamic_cast<NS_CORBA::AuditLogif*>(objects.at(qv_standalone::kAuditService)->GetInterface()),
              nullptr);
}
