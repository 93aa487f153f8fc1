// A running Naming_Service in a directory of its own, and the ORB's own tools to look at it.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {

constexpr const char* kReady = "serving corbaloc:";

/// One port, one temporary directory laid out as an installation has it (bin/ below it is the working
/// directory), and the naming service that runs there. Ends its processes when it goes.
class NamingRun {
  public:
    explicit NamingRun(std::string host = "127.0.0.1");

    /// From the next start on by SSL as well, with this service configuration file.
    void UseSsl(const std::string& profile);

    /// Starts the service with "-o ../ns.ior" and these further arguments, without waiting.
    ChildProcess& Start(const std::vector<std::string>& further = {});
    /// Starts it and waits until it serves; false with its messages in the test's output otherwise.
    bool StartAndWait(const std::vector<std::string>& further = {});
    ChildProcess& Service() { return *m_service; }

    /// Process id of the name server below the service; 0 when there is none.
    pid_t ServerPid() const;

    int Port() const { return m_port; }
    int SslPort() const { return m_ssl_port; }
    const TempDir& Dir() const { return m_dir; }
    std::string IorFile() const { return m_dir.File("ns.ior"); }
    std::string DataDir() const { return m_dir.File("naming-" + std::to_string(m_port)); }
    std::string BindingFile() const { return DataDir() + "/omninames.dat"; }

    /// Runs nameclt against corbaloc:iiop:HOST:PORT/NameService.
    RunResult Client(const std::vector<std::string>& arguments, const std::string& host = "127.0.0.1") const;

    ChildOptions& Options() { return m_options; }

  private:
    TempDir m_dir;
    std::string m_host;
    int m_port;
    int m_ssl_port = 0;
    std::string m_profile;
    ChildOptions m_options;
    std::unique_ptr<ChildProcess> m_service;
};

/// True while the process runs; a zombie doesn't.
bool IsAlive(pid_t pid);

/// True when a new listener could take the port of 127.0.0.1.
bool PortIsFree(int port);

std::string NodeName();

}  // namespace qv_test
