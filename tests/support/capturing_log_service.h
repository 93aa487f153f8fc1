#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/log_service.h"
#include "standalone/registry.h"

namespace qv_test {

/// One record as the log service got it.
struct LogEntry {
    std::string category;
    std::string file;
    std::string function;
    int line = 0;
    int level = 0;
    std::string text;
};

/// One successful or refused OpenLog.
struct OpenedLog {
    std::string bundle;
    std::string module;
    std::string category;
};

/// An in-memory log service that keeps what it gets. Any thread may log while a test reads.
class CapturingLogService final : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    CapturingLogService();
    ~CapturingLogService() override;

    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string& bundle, const std::string& module,
                                        const std::string& category) override;
    int IsVerboseLog() override;

    /// From now on OpenLog refuses that category (returns null).
    void Refuse(const std::string& category);
    /// What IsVerboseLog answers; 0 at first.
    void SetVerbose(int verbose);
    /// From now on each Write calls `hook` first, which may throw. An empty one takes it off.
    void SetWriteHook(std::function<void(const LogEntry&)> hook);

    std::vector<LogEntry> Entries() const;
    std::vector<LogEntry> Entries(const std::string& category) const;
    /// Every OpenLog call in order, the refused ones too.
    std::vector<OpenedLog> Opened() const;
    /// The first record of `category` whose text holds `part`; null when there is none.
    std::unique_ptr<LogEntry> Find(const std::string& category, const std::string& part) const;
    bool Contains(const std::string& category, const std::string& part) const;
    /// Forgets the records and the OpenLog calls; the handles stay open.
    void Clear();

  private:
    class Handle;
    friend class Handle;
    void Add(const LogEntry& entry);

    mutable std::mutex m_lock;
    std::map<std::string, std::unique_ptr<Handle>> m_handles;
    std::set<std::string> m_refused;
    std::vector<LogEntry> m_entries;
    std::vector<OpenedLog> m_opened;
    std::function<void(const LogEntry&)> m_hook;
    int m_verbose = 0;
};

/// While it lives a capturing log service stands in the place of the platform's own one, or, made with
/// kNoService, there is no log service at all. What stood there before returns at the end. Handles that were
/// opened through it must not be used afterwards.
class ScopedLogCapture {
  public:
    enum Mode { kCapture, kNoService };

    explicit ScopedLogCapture(Mode mode = kCapture);
    ~ScopedLogCapture();
    ScopedLogCapture(const ScopedLogCapture&) = delete;
    ScopedLogCapture& operator=(const ScopedLogCapture&) = delete;

    CapturingLogService& service() { return *m_service; }
    CapturingLogService* operator->() { return m_service.get(); }

  private:
    std::unique_ptr<CapturingLogService> m_service;
    std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> m_former;
};

}  // namespace qv_test
