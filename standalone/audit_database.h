#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace qv_standalone {

/// The SQLite file of an audit, open for writing, with its statements prepared. What an operation returned
/// from has been handed to the system, so it outlives the process; a crash of the machine may cost what came
/// after the last checkpoint. Any failure is a std::runtime_error with SQLite's reason, and takes back what
/// the operation had done. One thread at a time uses it.
class AuditDatabase {
  public:
    /// Opens the file, or makes it with its tables and its directory.
    explicit AuditDatabase(const std::string& path);
    ~AuditDatabase();
    AuditDatabase(const AuditDatabase&) = delete;
    AuditDatabase& operator=(const AuditDatabase&) = delete;

    /// Writes the beginning of an operation and returns its row number, which is above 0.
    std::int64_t Begin(unsigned long requestId, pid_t thread,
                       const std::map<std::string, std::string>& fields);
    /// Writes the end of the operation in `row`.
    void End(std::int64_t row, int result, const std::string& detail);

    /// Pages in the write-ahead log after the last operation.
    int LogPages() const { return m_log_pages; }
    /// Brings all of the write-ahead log into the file, wherever that was moved to, and waits for the disk.
    /// False when a reader is in the way.
    bool Finish() noexcept;
    /// Lets the destructor leave the write-ahead log as it is, and so not wait for the disk.
    void LeaveLog() noexcept;

  private:
    struct CloseDatabase {
        void operator()(sqlite3* db) const;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

    static int Committed(void* self, sqlite3* db, const char* name, int pages);
    void Execute(const char* sql);
    Statement Prepare(const char* sql);
    std::int64_t InsertBegun(unsigned long requestId, pid_t thread,
                             const std::map<std::string, std::string>& fields);
    void InsertFurther(std::int64_t row, const std::map<std::string, std::string>& fields);

    std::unique_ptr<sqlite3, CloseDatabase> m_db;  // outlives the statements
    int m_log_pages = 0;
    Statement m_begun;
    Statement m_further;
    Statement m_ended;
};

/// Brings the write-ahead log of the audit `path` into the file, as far as nobody reads it, and waits for the
/// disk, while an AuditDatabase of another thread goes on writing. What goes wrong is left to the next time.
void CheckpointAudit(const std::string& path) noexcept;

}  // namespace qv_standalone
