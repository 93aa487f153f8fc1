#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace qv_notify {

/// SQLite could not do something; the text is its reason.
class DatabaseError : public std::runtime_error {
  public:
    DatabaseError(int code, const std::string& reason) : std::runtime_error(reason), m_code(code) {}
    /// The primary result code of SQLite.
    int Code() const { return m_code; }

  private:
    const int m_code;
};

/// One connection to a file of SQLite. One thread at a time uses it and its statements.
class Database {
  public:
    /// Opens a file that exists. Throws DatabaseError, as do the other functions.
    explicit Database(const std::string& path);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Execute(const std::string& sql);
    /// The number that a query gives, which has one row; for PRAGMAs.
    std::int64_t QueryNumber(const std::string& sql);
    /// The text that a query gives, which has one row.
    std::string QueryText(const std::string& sql);
    /// Nobody may write the file by this connection.
    bool IsReadOnly() const;
    /// The rows that the last statement changed.
    int Changes() const;
    /// Takes back what the transaction under way has done, if there is one.
    void RollBack() noexcept;

    /// Pages in the write-ahead log after the last commit, beside which this connection doesn't clear the
    /// log by itself.
    int LogPages() const { return m_log_pages; }
    /// Brings as much of the write-ahead log into the file as nobody reads, and waits for the disk. What goes
    /// wrong is left to the next time.
    void Checkpoint() noexcept;

    sqlite3* Handle() const { return m_db.get(); }

  private:
    struct Close {
        void operator()(sqlite3* db) const;
    };

    static int Committed(void* self, sqlite3* db, const char* name, int pages);

    std::unique_ptr<sqlite3, Close> m_db;
    int m_log_pages = 0;
};

/// A prepared statement, used again and again.
class Statement {
  public:
    Statement(Database& database, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    sqlite3_stmt* Handle() const { return m_statement.get(); }
    const Database& Owner() const { return m_database; }

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    const Database& m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

/// One run of a statement, which is ready for the next one afterwards. Parameters are given, and columns
/// read, in their order.
class Run {
  public:
    explicit Run(const Statement& statement);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    Run& Number(std::int64_t value);
    /// Neither is copied: the value has to stay until the run has ended.
    Run& Text(const std::string& value);
    Run& Octets(const std::string& value);

    /// False when there is no further row.
    bool Next();
    /// For statements without rows.
    void Finish();

    std::int64_t NumberAt(int column) const;
    std::string StringAt(int column) const;

  private:
    void Check(int code) const;

    sqlite3_stmt* const m_statement;
    const Database& m_database;
    int m_at = 0;
};

}  // namespace qv_notify
