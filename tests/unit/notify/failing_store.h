// A store that a test can keep from writing.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "services/notify/store/store.h"
#include "tests/support/temp_dir.h"

namespace qv_notify_test {

/// A store with one channel "c1" and the proxies "c1/sa0/p1" and "c1/ca0/p2". A trigger in its file stands
/// for a full disk.
class FailingStore {
  public:
    FailingStore() {
        for (const char* path : {"c1", "c1/ca0", "c1/sa0", "c1/sa0/p1", "c1/ca0/p2"}) {
            store.Put(path, "{}");
        }
    }
    void FailToInsertInto(const std::string& table) {
        Execute("CREATE TRIGGER full BEFORE INSERT ON " + table +
                " BEGIN SELECT RAISE(ABORT, 'told to fail'); END");
    }
    void FailToDeleteFrom(const std::string& table) {
        Execute("CREATE TRIGGER full BEFORE DELETE ON " + table +
                " BEGIN SELECT RAISE(ABORT, 'told to fail'); END");
    }
    void Mend() { Execute("DROP TRIGGER full"); }

  private:
    void Execute(const std::string& sql) const {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(m_dir.File("notify.db").c_str(), &db), SQLITE_OK);
        sqlite3_busy_timeout(db, 10000);
        EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
        sqlite3_close(db);
    }

    const qv_test::TempDir m_dir;

  public:
    qv_notify::Store store{m_dir.File("notify.db")};
};

}  // namespace qv_notify_test
