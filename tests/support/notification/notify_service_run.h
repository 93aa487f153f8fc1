// The notification service as a process of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {

/// A Notify_Service on a port of 127.0.0.1 with a data directory of its own, which stay the same over
/// restarts. One thread uses it.
class NotifyServiceRun {
  public:
    /// Starts the service and waits until it is up. `options` follow those for the end point and the
    /// directory. With a service configuration file it serves by SSL as well.
    explicit NotifyServiceRun(std::vector<std::string> options = {}, std::string ssl_profile = {});

    /// Starts it again, once it has ended.
    void Start();
    /// SIGKILL, and waits.
    void Kill() { m_process->Kill(); }
    /// SIGTERM; the exit code, or nothing when it doesn't end in time.
    std::optional<int> Stop(ChildProcess::Millis timeout = ChildProcess::Millis(10000));

    ChildProcess& Process() { return *m_process; }
    int Port() const { return m_port; }
    int SslPort() const { return m_ssl_port; }
    std::string Corbaloc() const;
    std::string StoreFile() const { return m_dir.File("data/notify.db"); }
    /// What it said to the operator in all runs so far.
    std::string Said() const;

  private:
    const TempDir m_dir;
    const int m_port;
    const std::string m_ssl_profile;
    const int m_ssl_port;  // 0: no SSL
    const std::vector<std::string> m_options;
    std::string m_said;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace qv_test
