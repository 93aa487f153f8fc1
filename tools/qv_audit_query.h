#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

struct sqlite3;

namespace qv_tools {

/// One audited operation. Texts are as they were written, any byte included.
struct AuditRow {
    std::int64_t id = 0;
    std::int64_t request_id = 0;
    std::int64_t process = 0;
    std::int64_t thread = 0;
    std::int64_t begin_ms = 0;           ///< since 1970, UTC
    std::optional<std::int64_t> end_ms;  ///< nothing: not ended, or its process was killed
    std::optional<std::int64_t> result;  ///< 0 succeeded; nothing as for end_ms
    std::string operation;
    std::string address;  ///< as the agent wrote it, tags included
    std::string risk;     ///< "RISK", "MINOR" or empty
    std::string info;     ///< what was asked
    std::string detail;   ///< what was answered
    std::vector<std::pair<std::string, std::string>> further;
};

/// What is asked for; an empty text asks for all.
struct AuditFilter {
    std::string operation;  ///< a shell pattern: * stands for any letters
    std::string address;    ///< host, host:port or user@host:port
    std::optional<std::int64_t> since_ms;
    bool open = false;        ///< open ones; together with `failed`, both kinds
    bool failed = false;      ///< those whose result isn't 0
    std::uint64_t limit = 0;  ///< rows at most; 0: all
};

/// Why an audit can't be shown, in a sentence, and the exit code that goes with it.
class AuditFault : public std::runtime_error {
  public:
    enum Kind { kUnreadable = 2, kMissing = 3, kNoAudit = 4, kLocked = 5 };
    AuditFault(Kind kind, const std::string& sentence) : std::runtime_error(sentence), m_kind(kind) {}
    Kind kind() const { return m_kind; }

  private:
    Kind m_kind;
};

/// An audit file, opened for reading only. Others may write it meanwhile. One thread at a time uses it.
class AuditQuery {
  public:
    /// Throws AuditFault.
    explicit AuditQuery(const std::string& path);
    ~AuditQuery();
    AuditQuery(const AuditQuery&) = delete;
    AuditQuery& operator=(const AuditQuery&) = delete;

    /// Shows the newest first. Throws AuditFault, and what `show` throws. True when `limit` left rows out.
    bool Run(const AuditFilter& filter, const std::function<void(const AuditRow&)>& show);

  private:
    struct Statement;
    void Open();
    void ReadFurther(AuditRow& row);
    [[noreturn]] void Throw(int code) const;

    const std::string m_path;
    sqlite3* m_db = nullptr;
};

}  // namespace qv_tools
