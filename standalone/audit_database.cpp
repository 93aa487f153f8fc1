#include "standalone/audit_database.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>

namespace qv_standalone {
namespace {

constexpr int kBusyMilliseconds = 50;
constexpr int kMostLogPages = 16000;  // 64 MiB; then the writer itself clears the log, should nobody else

// WAL with "normal" hands each row to the system before the call returns but syncs at checkpoints only.
constexpr const char* kSchema = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS begun(id INTEGER PRIMARY KEY, request_id INTEGER NOT NULL,
  begin_ms INTEGER NOT NULL, process INTEGER NOT NULL, thread INTEGER NOT NULL,
  operName TEXT, nmsAddress TEXT, strInfo TEXT, riskLevel TEXT);
CREATE TABLE IF NOT EXISTS further(begun_id INTEGER NOT NULL REFERENCES begun(id), name TEXT, value TEXT);
CREATE TABLE IF NOT EXISTS ended(begun_id INTEGER PRIMARY KEY REFERENCES begun(id), end_ms INTEGER NOT NULL,
  result INTEGER NOT NULL, detail TEXT);
CREATE TRIGGER IF NOT EXISTS begun_stays BEFORE UPDATE ON begun
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE TRIGGER IF NOT EXISTS begun_remains BEFORE DELETE ON begun
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE TRIGGER IF NOT EXISTS further_stays BEFORE UPDATE ON further
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE TRIGGER IF NOT EXISTS further_remains BEFORE DELETE ON further
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE TRIGGER IF NOT EXISTS ended_stays BEFORE UPDATE ON ended
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE TRIGGER IF NOT EXISTS ended_remains BEFORE DELETE ON ended
  BEGIN SELECT RAISE(ABORT, 'the audit is append-only'); END;
CREATE VIEW IF NOT EXISTS audit AS SELECT id, request_id, process, thread, begin_ms, end_ms, operName, nmsAddress,
  strInfo, riskLevel, result, detail FROM begun LEFT JOIN ended ON begun_id = id;
)";

constexpr const char* kColumns[] = {"operName", "nmsAddress", "strInfo", "riskLevel"};

bool IsColumn(const std::string& name) {
    return std::find(std::begin(kColumns), std::end(kColumns), name) != std::end(kColumns);
}

/// One run of a prepared statement, which is ready for the next one afterwards.
class Run {
  public:
    Run(sqlite3* db, sqlite3_stmt* statement) : m_db(db), m_statement(statement) {}
    ~Run() {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    Run& Number(std::int64_t value) {
        Check(sqlite3_bind_int64(m_statement, ++m_at, value));
        return *this;
    }
    /// The text isn't copied: it has to stay until the run has ended.
    Run& Text(const std::string& value) {
        Check(
            sqlite3_bind_text64(m_statement, ++m_at, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
        return *this;
    }
    Run& Nothing() {
        ++m_at;
        return *this;
    }
    void Step() {
        if (sqlite3_step(m_statement) != SQLITE_DONE) {
            throw std::runtime_error(sqlite3_errmsg(m_db));
        }
    }

  private:
    void Check(int code) const {
        if (code != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(m_db));
        }
    }
    sqlite3* const m_db;
    sqlite3_stmt* const m_statement;
    int m_at = 0;
};

std::int64_t NowMilliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

void AuditDatabase::CloseDatabase::operator()(sqlite3* db) const {
    sqlite3_close_v2(db);
}

void AuditDatabase::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

AuditDatabase::AuditDatabase(const std::string& path) {
    const std::filesystem::path directory = std::filesystem::path(path).parent_path();
    if (!directory.empty()) {
        std::filesystem::create_directories(directory);
    }
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    sqlite3* db = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &db, kFlags, nullptr);
    m_db.reset(db);
    if (code != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errstr(code));
    }
    sqlite3_busy_timeout(db, kBusyMilliseconds);
    chmod(path.c_str(), 0640);  // addresses and parameters are not for everybody
    sqlite3_wal_hook(db, &AuditDatabase::Committed, this);
    Execute(kSchema);
    m_begun = Prepare(
        "INSERT INTO begun(request_id, begin_ms, process, thread, operName, nmsAddress, strInfo, riskLevel) "
        "VALUES(?,?,?,?,?,?,?,?)");
    m_further = Prepare("INSERT INTO further VALUES(?,?,?)");
    m_ended = Prepare("INSERT INTO ended VALUES(?,?,?,?)");
}

AuditDatabase::~AuditDatabase() = default;

/// In place of SQLite's own hook, which would have the writer wait for the disk every 1000 pages.
int AuditDatabase::Committed(void* self, sqlite3* db, const char* name, int pages) {
    static_cast<AuditDatabase*>(self)->m_log_pages = pages;
    if (pages >= kMostLogPages) {
        sqlite3_wal_checkpoint_v2(db, name, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    }
    return SQLITE_OK;
}

bool AuditDatabase::Finish() noexcept {
    return sqlite3_wal_checkpoint_v2(m_db.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) !=
           SQLITE_BUSY;
}

void AuditDatabase::LeaveLog() noexcept {
    sqlite3_db_config(m_db.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void CheckpointAudit(const std::string& path) noexcept {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) ==
        SQLITE_OK) {
        // A connection that has read nothing yet doesn't know of the log.
        sqlite3_exec(db, "PRAGMA synchronous = NORMAL; SELECT count(*) FROM sqlite_master", nullptr, nullptr,
                     nullptr);
        sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    }
    sqlite3_close_v2(db);
}

void AuditDatabase::Execute(const char* sql) {
    if (sqlite3_exec(m_db.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
}

AuditDatabase::Statement AuditDatabase::Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(m_db.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
    return Statement(statement);
}

std::int64_t AuditDatabase::Begin(unsigned long requestId, pid_t thread,
                                  const std::map<std::string, std::string>& fields) {
    const bool further =
        std::any_of(fields.begin(), fields.end(), [](const auto& field) { return !IsColumn(field.first); });
    if (!further) {
        return InsertBegun(requestId, thread, fields);
    }
    Execute("BEGIN IMMEDIATE");
    try {
        const std::int64_t row = InsertBegun(requestId, thread, fields);
        InsertFurther(row, fields);
        Execute("COMMIT");
        return row;
    } catch (const std::exception&) {
        sqlite3_exec(m_db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

std::int64_t AuditDatabase::InsertBegun(unsigned long requestId, pid_t thread,
                                        const std::map<std::string, std::string>& fields) {
    Run begun(m_db.get(), m_begun.get());
    begun.Number(static_cast<std::int64_t>(requestId)).Number(NowMilliseconds());
    begun.Number(getpid()).Number(thread);
    for (const char* column : kColumns) {
        const auto found = fields.find(column);
        found == fields.end() ? begun.Nothing() : begun.Text(found->second);
    }
    begun.Step();
    return sqlite3_last_insert_rowid(m_db.get());
}

void AuditDatabase::InsertFurther(std::int64_t row, const std::map<std::string, std::string>& fields) {
    for (const auto& [name, value] : fields) {
        if (!IsColumn(name)) {
            Run(m_db.get(), m_further.get()).Number(row).Text(name).Text(value).Step();
        }
    }
}

void AuditDatabase::End(std::int64_t row, int result, const std::string& detail) {
    Run(m_db.get(), m_ended.get()).Number(row).Number(NowMilliseconds()).Number(result).Text(detail).Step();
}

}  // namespace qv_standalone
