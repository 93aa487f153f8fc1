#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/audit_log.h"
#include "standalone/file_stamp.h"

namespace qv_standalone {

class AuditDatabase;

/// The audit of the stand-alone platform, in an SQLite file that refuses to change or delete a row. The view
/// "audit" shows each operation with its end, which is null while it runs. What BeginAudit returned from is
/// in the file even when the process is killed at that moment; a crash of the machine may cost the last rows.
///
/// An end belongs to the newest operation of that request id that the same thread has begun. No operation
/// throws or waits for long: a row that can't be written is lost and counted. The first loss, and the number
/// when writing works again, are told; after a failure the file is tried again once a second at most.
class AuditStore final : public NS_CORBA::AuditLogif {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    /// Takes a sentence for the operator. Must not throw.
    using Tell = std::function<void(const std::string& sentence)>;

    /// The file is opened, and made, when it is first needed.
    AuditStore(
        std::string path, Tell tell, Clock clock = [] { return std::chrono::steady_clock::now(); });
    ~AuditStore() override;

    void BeginAudit(const unsigned long& requestId,
                    const std::map<std::string, std::string>& fields) override;
    void EndAudit(const unsigned long& requestId, const int& result, const std::string& detail) override;

    /// To be called regularly, by a thread that may wait for the disk: shortens a write-ahead log that has
    /// grown long, and sees that the file was moved away. Never throws.
    void Tend() noexcept;

    /// Rows lost since the process began.
    std::uint64_t Lost() const;

  private:
    using Key = std::pair<pid_t, unsigned long>;

    bool Ready();
    bool WasMoved() const;
    bool LetGo();
    void ForgetOpenOnes();
    void Fail(const std::string& reason);
    void Recovered();
    void Remember(const Key& key, std::int64_t row);

    const std::string m_path;
    const Tell m_tell;
    const Clock m_clock;

    mutable std::mutex m_lock;            // guards what follows
    std::unique_ptr<AuditDatabase> m_db;  // none while it can't be written
    FileStamp m_opened;                   // size and time of it mean nothing
    std::chrono::steady_clock::time_point m_next_look{};
    std::map<Key, std::vector<std::int64_t>> m_open;  // row numbers, 0 for a row that was lost
    std::uint64_t m_lost = 0;
    std::uint64_t m_lost_told = 0;
    bool m_failed = false;
};

}  // namespace qv_standalone
