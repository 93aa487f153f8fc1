#pragma once

#include <memory>
#include <string>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_test {

/// A real naming service in a process of its own, on a free port of 127.0.0.1; ends with this object.
class NamingServer {
  public:
    /// Throws std::runtime_error when it doesn't come up.
    NamingServer();

    int port() const { return m_port; }
    /// The stringified reference of its root context.
    const std::string& ior() const { return m_ior; }
    void Stop() { m_process->Kill(); }

  private:
    TempDir m_dir;
    int m_port;
    std::string m_ior;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace qv_test
