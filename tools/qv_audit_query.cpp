#include "tools/qv_audit_query.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "tools/qv_audit_caller.h"

namespace qv_tools {
namespace {

constexpr int kBusyMilliseconds = 2000;

constexpr const char* kSelect =
    "SELECT id, request_id, process, thread, begin_ms, end_ms, operName, nmsAddress, strInfo, riskLevel, "
    "result, detail FROM audit WHERE (?1 IS NULL OR operName GLOB ?1) "
    "AND (?2 IS NULL OR is_caller(nmsAddress, ?2)) AND (?3 IS NULL OR begin_ms >= ?3) "
    "AND (?4 + ?5 = 0 OR (?4 AND result IS NULL) OR (?5 AND result <> 0)) ORDER BY id DESC";

std::string TextOf(sqlite3_value* value) {
    const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
    return bytes == nullptr ? "" : std::string(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

/// The SQL function is_caller(nmsAddress, wanted).
void IsCaller(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    try {
        sqlite3_result_int(context, CallerMatches(TextOf(values[0]), TextOf(values[1])) ? 1 : 0);
    } catch (const std::exception&) {
        sqlite3_result_error_nomem(context);
    }
}

/// A URI that keeps SQLite from making files beside this one.
std::string ImmutableUri(const std::string& path) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string uri = path[0] == '/' ? "file://" : "file:";
    for (const char c : path) {
        if (std::strchr("?#%", c) != nullptr) {
            const auto byte = static_cast<unsigned char>(c);
            uri += '%';
            uri += kDigits[byte >> 4];
            uri += kDigits[byte & 15];
        } else {
            uri += c;
        }
    }
    return uri + "?immutable=1";
}

bool HasBytes(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

}  // namespace

/// A statement of the query's connection, and access to the row it stands on.
struct AuditQuery::Statement {
    Statement(const AuditQuery& query, const char* sql) : owner(query) {
        Check(sqlite3_prepare_v2(owner.m_db, sql, -1, &handle, nullptr));
    }
    ~Statement() { sqlite3_finalize(handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void Check(int code) const {
        if (code != SQLITE_OK) {
            owner.Throw(code);
        }
    }
    bool Step() const {
        const int code = sqlite3_step(handle);
        if (code != SQLITE_ROW && code != SQLITE_DONE) {
            owner.Throw(code);
        }
        return code == SQLITE_ROW;
    }
    void BindText(int at, const std::string& text) const {
        if (!text.empty()) {
            Check(sqlite3_bind_text64(handle, at, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
        }
    }
    void BindNumber(int at, std::int64_t value) const { Check(sqlite3_bind_int64(handle, at, value)); }
    std::int64_t Number(int column) const { return sqlite3_column_int64(handle, column); }
    std::optional<std::int64_t> MaybeNumber(int column) const {
        if (sqlite3_column_type(handle, column) == SQLITE_NULL) {
            return std::nullopt;
        }
        return Number(column);
    }
    std::string Text(int column) const {
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(handle, column));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle, column));
        return bytes == nullptr ? "" : std::string(bytes, size);
    }

    const AuditQuery& owner;
    sqlite3_stmt* handle = nullptr;
};

AuditQuery::AuditQuery(const std::string& path) : m_path(path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            throw AuditFault(AuditFault::kMissing,
                             path +
                                 ": there is no such file; the agent makes it with the first operation "
                                 "that it audits");
        }
        throw AuditFault(AuditFault::kUnreadable, path + ": " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw AuditFault(AuditFault::kNoAudit, path + ": this is no file");
    }
    try {
        Open();
    } catch (...) {
        sqlite3_close_v2(m_db);
        throw;
    }
}

AuditQuery::~AuditQuery() {
    sqlite3_close_v2(m_db);
}

/// Without a write-ahead log, no agent has the file open and it is whole by itself. Then it is read so that
/// nothing is made beside it, which an agent of another user could not open later.
void AuditQuery::Open() {
    const bool whole = !HasBytes(m_path + "-wal");
    const int code = whole ? sqlite3_open_v2(ImmutableUri(m_path).c_str(), &m_db,
                                             SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr)
                           : sqlite3_open_v2(m_path.c_str(), &m_db, SQLITE_OPEN_READONLY, nullptr);
    if (code != SQLITE_OK) {
        Throw(code);
    }
    sqlite3_busy_timeout(m_db, kBusyMilliseconds);
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    sqlite3_create_function(m_db, "is_caller", 2, kFlags, nullptr, IsCaller, nullptr, nullptr);
    Statement tables(
        *this, "SELECT count(*) FROM sqlite_master WHERE name IN ('audit', 'begun', 'ended', 'further')");
    constexpr int kTables = 4;
    if (!tables.Step() || tables.Number(0) != kTables) {
        throw AuditFault(AuditFault::kNoAudit, m_path + ": this database holds no audit");
    }
}

bool AuditQuery::Run(const AuditFilter& filter, const std::function<void(const AuditRow&)>& show) {
    const Statement rows(*this, kSelect);
    rows.BindText(1, filter.operation);
    rows.BindText(2, filter.address);
    if (filter.since_ms) {
        rows.BindNumber(3, *filter.since_ms);
    }
    rows.BindNumber(4, filter.open ? 1 : 0);
    rows.BindNumber(5, filter.failed ? 1 : 0);
    for (std::uint64_t shown = 0; rows.Step(); ++shown) {
        if (filter.limit != 0 && shown == filter.limit) {
            return true;
        }
        AuditRow row;
        row.id = rows.Number(0);
        row.request_id = rows.Number(1);
        row.process = rows.Number(2);
        row.thread = rows.Number(3);
        row.begin_ms = rows.Number(4);
        row.end_ms = rows.MaybeNumber(5);
        row.operation = rows.Text(6);
        row.address = rows.Text(7);
        row.info = rows.Text(8);
        row.risk = rows.Text(9);
        row.result = rows.MaybeNumber(10);
        row.detail = rows.Text(11);
        ReadFurther(row);
        show(row);
    }
    return false;
}

void AuditQuery::ReadFurther(AuditRow& row) {
    const Statement pairs(*this, "SELECT name, value FROM further WHERE begun_id = ?1 ORDER BY rowid");
    pairs.BindNumber(1, row.id);
    while (pairs.Step()) {
        row.further.emplace_back(pairs.Text(0), pairs.Text(1));
    }
}

void AuditQuery::Throw(int code) const {
    const std::string reason = m_db == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(m_db);
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            throw AuditFault(AuditFault::kLocked,
                             m_path + ": another program keeps the file locked; try again");
        case SQLITE_NOTADB:
            throw AuditFault(AuditFault::kNoAudit, m_path + ": this is no audit database (" + reason + ")");
        case SQLITE_CORRUPT:
        case SQLITE_ERROR:
            throw AuditFault(AuditFault::kNoAudit,
                             m_path + ": the audit database is damaged (" + reason + ")");
        case SQLITE_CANTOPEN:
        case SQLITE_READONLY:
            throw AuditFault(
                AuditFault::kUnreadable,
                m_path + ": the file can't be opened (" + reason +
                    "). You need the right to read it and its companion " + m_path +
                    "-wal; in a directory that you can't write to, copy both elsewhere and look at "
                    "the copies");
        default:
            throw AuditFault(AuditFault::kUnreadable, m_path + ": the file can't be read (" + reason + ")");
    }
}

}  // namespace qv_tools
