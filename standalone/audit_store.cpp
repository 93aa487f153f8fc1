#include "standalone/audit_store.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace qv_standalone {
namespace {

constexpr std::chrono::seconds kLookInterval{1};
constexpr int kBusyMilliseconds = 50;
constexpr std::size_t kMostOpen = 100000;  // operations whose end never came

// WAL with "normal" hands each row to the system before the call returns but syncs at checkpoints only.
constexpr const char* kSchema = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS begun(id INTEGER PRIMARY KEY AUTOINCREMENT, request_id INTEGER NOT NULL,
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

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// One statement, run once. Throws std::runtime_error with SQLite's reason.
class Insert {
  public:
    Insert(sqlite3* db, const char* sql) : m_db(db) {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr));
        m_statement.reset(statement);
    }
    Insert& Number(std::int64_t value) {
        Check(sqlite3_bind_int64(m_statement.get(), ++m_at, value));
        return *this;
    }
    Insert& Text(const std::string& value) {
        Check(sqlite3_bind_text64(m_statement.get(), ++m_at, value.data(), value.size(), SQLITE_TRANSIENT,
                                  SQLITE_UTF8));
        return *this;
    }
    Insert& Nothing() {
        ++m_at;
        return *this;
    }
    void Run() {
        if (sqlite3_step(m_statement.get()) != SQLITE_DONE) {
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
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
    int m_at = 0;
};

void Execute(sqlite3* db, const char* sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(db));
    }
}

/// Takes all back that was done since it was made, unless Commit came.
class Transaction {
  public:
    explicit Transaction(sqlite3* db) : m_db(db) { Execute(db, "BEGIN IMMEDIATE"); }
    ~Transaction() {
        if (!m_done) {
            sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit() {
        Execute(m_db, "COMMIT");
        m_done = true;
    }

  private:
    sqlite3* const m_db;
    bool m_done = false;
};

std::int64_t NowMilliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

pid_t ThisThread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

bool IsColumn(const std::string& name) {
    return name == "operName" || name == "nmsAddress" || name == "strInfo" || name == "riskLevel";
}

}  // namespace

AuditStore::AuditStore(std::string path, Tell tell, Clock clock)
    : m_path(std::move(path)), m_tell(std::move(tell)), m_clock(std::move(clock)) {}

AuditStore::~AuditStore() {
    Close();
}

std::uint64_t AuditStore::Lost() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_lost;
}

void AuditStore::BeginAudit(const unsigned long& requestId,
                            const std::map<std::string, std::string>& fields) {
    std::lock_guard<std::mutex> guard(m_lock);
    const Key key(ThisThread(), requestId);
    std::int64_t row = 0;
    try {
        if (Ready()) {
            row = InsertBegin(requestId, fields);
            Recovered();
        }
    } catch (const std::exception& error) {
        Fail(error.what());
    }
    m_lost += row == 0 ? 1 : 0;
    try {
        Remember(key, row);
    } catch (const std::exception&) {
        // No memory: the operation stays open in the audit.
    }
}

void AuditStore::EndAudit(const unsigned long& requestId, const int& result, const std::string& detail) {
    std::lock_guard<std::mutex> guard(m_lock);
    const auto found = m_open.find(Key(ThisThread(), requestId));
    if (found == m_open.end()) {
        return;  // it began when it was of no risk
    }
    const std::int64_t row = found->second.back();
    found->second.pop_back();
    if (found->second.empty()) {
        m_open.erase(found);
    }
    try {
        if (row != 0 && Ready()) {
            InsertEnd(row, result, detail);
            Recovered();
            return;
        }
    } catch (const std::exception& error) {
        Fail(error.what());
    }
    ++m_lost;
}

/// Under the lock: opens the file when it is time. A file that was moved away is made anew.
bool AuditStore::Ready() {
    const auto now = m_clock();
    if (now < m_next_look) {
        return m_db != nullptr;
    }
    m_next_look = now + kLookInterval;
    if (m_db != nullptr) {
        const FileStamp present = StampOf(m_path);
        if (present.device == m_opened.device && present.inode == m_opened.inode) {
            return true;
        }
        Close();
    }
    Open();
    return true;
}

void AuditStore::Open() {
    const std::filesystem::path directory = std::filesystem::path(m_path).parent_path();
    if (!directory.empty()) {
        std::filesystem::create_directories(directory);
    }
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = sqlite3_open_v2(m_path.c_str(), &m_db, kFlags, nullptr);
    if (code != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errstr(code));
    }
    sqlite3_busy_timeout(m_db, kBusyMilliseconds);
    chmod(m_path.c_str(), 0640);  // addresses and parameters are not for everybody
    Execute(m_db, kSchema);
    m_opened = StampOf(m_path);
}

void AuditStore::Close() {
    sqlite3_close_v2(m_db);
    m_db = nullptr;
}

/// Under the lock: gives the file up until the next look.
void AuditStore::Fail(const std::string& reason) {
    Close();
    m_next_look = m_clock() + kLookInterval;
    if (!m_failed) {
        m_failed = true;
        m_lost_told = m_lost;
        m_tell(
            "the audit " + m_path + " can't be written (" + reason +
            "); requests are served all the same, their rows are lost. Make room, make it writable, or move "
            "a damaged file away: it is tried again every second");
    }
}

void AuditStore::Recovered() {
    if (m_failed) {
        m_failed = false;
        m_tell("the audit " + m_path + " is written again; " + std::to_string(m_lost - m_lost_told) +
               " row(s) were lost");
    }
}

std::int64_t AuditStore::InsertBegin(unsigned long requestId,
                                     const std::map<std::string, std::string>& fields) {
    Transaction transaction(m_db);
    Insert begun(m_db,
                 "INSERT INTO begun(request_id, begin_ms, process, thread, operName, nmsAddress, strInfo, "
                 "riskLevel) VALUES(?,?,?,?,?,?,?,?)");
    begun.Number(static_cast<std::int64_t>(requestId)).Number(NowMilliseconds());
    begun.Number(getpid()).Number(ThisThread());
    for (const char* column : {"operName", "nmsAddress", "strInfo", "riskLevel"}) {
        const auto found = fields.find(column);
        found == fields.end() ? begun.Nothing() : begun.Text(found->second);
    }
    begun.Run();
    const std::int64_t row = sqlite3_last_insert_rowid(m_db);
    for (const auto& [name, value] : fields) {
        if (!IsColumn(name)) {
            Insert further(m_db, "INSERT INTO further VALUES(?,?,?)");
            further.Number(row).Text(name).Text(value).Run();
        }
    }
    transaction.Commit();
    return row;
}

void AuditStore::InsertEnd(std::int64_t row, int result, const std::string& detail) {
    Insert ended(m_db, "INSERT INTO ended VALUES(?,?,?,?)");
    ended.Number(row).Number(NowMilliseconds()).Number(result).Text(detail).Run();
}

/// Under the lock. Ends that never come must not fill the memory, so a crowded table begins anew.
void AuditStore::Remember(const Key& key, std::int64_t row) {
    if (m_open.size() >= kMostOpen) {
        m_open.clear();
    }
    std::vector<std::int64_t>& rows = m_open[key];
    if (rows.size() >= 16) {
        rows.erase(rows.begin());
    }
    rows.push_back(row);
}

}  // namespace qv_standalone
