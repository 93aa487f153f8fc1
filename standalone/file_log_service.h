#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/log_service.h"
#include "standalone/flush_timer.h"
#include "standalone/log_file.h"

namespace qv_standalone {

struct FileLogOptions {
    std::string directory;
    LogFileLimits limits;
    std::chrono::milliseconds flush_interval{1000};
    bool verbose = false;
};

/// The log service of the stand-alone platform: one rotating file per category, `<directory>/<category>.log`.
/// OpenLog gives null, and says why on the standard error, when the file can't be opened. Any thread may call
/// any operation. Handles live as long as the service.
class FileLogService final : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    explicit FileLogService(FileLogOptions options);
    ~FileLogService() override;

    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string& bundle, const std::string& module,
                                        const std::string& category) override;
    int IsVerboseLog() override;

    /// Writes what waits, and from now on every record at once: for a service that is not destroyed at the
    /// end of its process. A forked child leaves alone what it has of its parent's records.
    void StopWaiting();

  private:
    void FlushAll();
    void FlushWritten();

    const FileLogOptions m_options;
    const pid_t m_process;
    std::mutex m_lock;  // guards what follows; the files have locks of their own
    bool m_atOnce = false;
    std::map<std::string, std::unique_ptr<LogFile>> m_files;
    FlushTimer m_timer;  // last, so that its thread ends before the files go
};

/// The process's log service, made from the configuration on first use and never destroyed.
NS_LOG_SERVICE1::LogSvcInterface& DefaultLogService();

}  // namespace qv_standalone
