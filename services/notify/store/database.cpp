#include "services/notify/store/database.h"

#include <sqlite3.h>

namespace qv_notify {
namespace {

constexpr int kBusyMilliseconds = 2000;  // the checkpoint of the other connection, at most
constexpr int kPrimary = 0xFF;           // in it, a result code tells the kind of failure

[[noreturn]] void ThrowLast(sqlite3* db) {
    throw DatabaseError(sqlite3_errcode(db) & kPrimary, sqlite3_errmsg(db));
}

}  // namespace

void Database::Close::operator()(sqlite3* db) const {
    sqlite3_close_v2(db);
}

Database::Database(const std::string& path) {
    sqlite3* db = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_db.reset(db);
    if (code != SQLITE_OK) {
        throw DatabaseError(code & kPrimary, sqlite3_errstr(code));
    }
    sqlite3_busy_timeout(db, kBusyMilliseconds);
    sqlite3_wal_hook(db, &Database::Committed, this);
}

Database::~Database() = default;

int Database::Committed(void* self, sqlite3* /*db*/, const char* /*name*/, int pages) {
    static_cast<Database*>(self)->m_log_pages = pages;
    return SQLITE_OK;
}

void Database::Execute(const std::string& sql) {
    if (sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        ThrowLast(m_db.get());
    }
}

std::int64_t Database::QueryNumber(const std::string& sql) {
    const Statement statement(*this, sql.c_str());
    Run run(statement);
    return run.Next() ? run.NumberAt(0) : 0;
}

std::string Database::QueryText(const std::string& sql) {
    const Statement statement(*this, sql.c_str());
    Run run(statement);
    return run.Next() ? run.StringAt(0) : std::string();
}

bool Database::IsReadOnly() const {
    return sqlite3_db_readonly(m_db.get(), "main") == 1;
}

int Database::Changes() const {
    return sqlite3_changes(m_db.get());
}

void Database::RollBack() noexcept {
    if (sqlite3_get_autocommit(m_db.get()) == 0) {
        sqlite3_exec(m_db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Database::Checkpoint() noexcept {
    // A connection that has read nothing yet doesn't know of the log.
    sqlite3_exec(m_db.get(), "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
    sqlite3_wal_checkpoint_v2(m_db.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, const char* sql) : m_database(database) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(database.Handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK) {
        ThrowLast(database.Handle());
    }
    m_statement.reset(statement);
}

Statement::~Statement() = default;

Run::Run(const Statement& statement) : m_statement(statement.Handle()), m_database(statement.Owner()) {}

Run::~Run() {
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

Run& Run::Number(std::int64_t value) {
    Check(sqlite3_bind_int64(m_statement, ++m_at, value));
    return *this;
}

Run& Run::Text(const std::string& value) {
    Check(sqlite3_bind_text64(m_statement, ++m_at, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Run& Run::Octets(const std::string& value) {
    Check(sqlite3_bind_blob64(m_statement, ++m_at, value.data(), value.size(), SQLITE_STATIC));
    return *this;
}

bool Run::Next() {
    const int code = sqlite3_step(m_statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        ThrowLast(m_database.Handle());
    }
    return code == SQLITE_ROW;
}

void Run::Finish() {
    while (Next()) {
    }
}

std::int64_t Run::NumberAt(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

std::string Run::StringAt(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
    const int size = sqlite3_column_bytes(m_statement, column);
    return data == nullptr ? std::string() : std::string(data, static_cast<std::size_t>(size));
}

void Run::Check(int code) const {
    if (code != SQLITE_OK) {
        ThrowLast(m_database.Handle());
    }
}

}  // namespace qv_notify
