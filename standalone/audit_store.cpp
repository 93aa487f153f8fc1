#include "standalone/audit_store.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

#include "standalone/audit_database.h"

namespace qv_standalone {
namespace {

constexpr std::chrono::seconds kLookInterval{1};
constexpr int kLongLog = 4000;             // pages: 16 MiB
constexpr std::size_t kMostOpen = 100000;  // operations whose end never came

pid_t ThisThread() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

}  // namespace

AuditStore::AuditStore(std::string path, Tell tell, Clock clock)
    : m_path(std::move(path)), m_tell(std::move(tell)), m_clock(std::move(clock)) {}

AuditStore::~AuditStore() = default;

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
            row = m_db->Begin(requestId, key.first, fields);
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
    std::vector<std::int64_t>& rows = found->second;
    std::uint64_t lost = 1;
    try {
        // Asked first: in a file that took the place of one moved away the number is that of another row.
        if (Ready() && rows.back() != 0) {
            m_db->End(rows.back(), result, detail);
            Recovered();
            lost = 0;
        }
    } catch (const std::exception& error) {
        Fail(error.what());
    }
    m_lost += lost;
    rows.pop_back();
    if (rows.empty()) {
        m_open.erase(found);
    }
}

/// Under the lock: opens the file when it is time. A file that was moved away is made anew.
bool AuditStore::Ready() {
    const auto now = m_clock();
    if (now < m_next_look) {
        return m_db != nullptr;
    }
    m_next_look = now + kLookInterval;
    if (m_db != nullptr && (!WasMoved() || !LetGo())) {
        return true;
    }
    ForgetOpenOnes();
    m_db = std::make_unique<AuditDatabase>(m_path);
    m_opened = StampOf(m_path);
    return true;
}

bool AuditStore::WasMoved() const {
    const FileStamp present = StampOf(m_path);
    return present.device != m_opened.device || present.inode != m_opened.inode;
}

/// Under the lock: leaves the file whole that was moved. False when a reader is in the way; then it is still
/// the one to write to, since the log that is left behind goes with the next file.
bool AuditStore::LetGo() {
    if (!m_db->Finish()) {
        return false;
    }
    m_db.reset();
    return true;
}

/// Under the lock: what began in a file can't end in another.
void AuditStore::ForgetOpenOnes() {
    if (WasMoved()) {
        for (auto& [key, rows] : m_open) {
            std::fill(rows.begin(), rows.end(), 0);
        }
    }
}

void AuditStore::Tend() noexcept {
    try {
        {
            std::lock_guard<std::mutex> guard(m_lock);
            if (m_db == nullptr) {
                return;
            }
            if (WasMoved()) {
                LetGo();
                return;
            }
            if (m_db->LogPages() < kLongLog) {
                return;
            }
        }
        CheckpointAudit(m_path);
    } catch (const std::exception&) {
        // No memory: the next time.
    }
}

/// Under the lock: gives the file up until the next look.
void AuditStore::Fail(const std::string& reason) {
    if (m_db != nullptr) {
        m_db->LeaveLog();
        m_db.reset();
    }
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
