#include "tests/support/notification/notify_service_run.h"

#include <signal.h>

#include <stdexcept>
#include <utility>

#include "tests/support/free_port.h"

namespace qv_test {

NotifyServiceRun::NotifyServiceRun(std::vector<std::string> options, std::string ssl_profile)
    : m_port(FreePort()),
      m_ssl_profile(std::move(ssl_profile)),
      m_ssl_port(m_ssl_profile.empty() ? 0 : FreePort()),
      m_options(std::move(options)) {
    Start();
}

void NotifyServiceRun::Start() {
    if (m_process) {
        m_said += m_process->Err();
    }
    std::vector<std::string> command{QV_NOTIFY_SERVICE, "-ORBEndpoint",
                                     "iiop://127.0.0.1:" + std::to_string(m_port), "-u", m_dir.File("data")};
    if (m_ssl_port != 0) {
        command[2] += "/ssl_port=" + std::to_string(m_ssl_port);
        command.insert(command.end(), {"-ORBSvcConf", m_ssl_profile});
    }
    command.insert(command.end(), m_options.begin(), m_options.end());
    m_process = std::make_unique<ChildProcess>(command);
    if (!m_process->WaitForOut("serving corbaloc")) {
        throw std::runtime_error("the notification service did not start: " + m_process->Err());
    }
}

std::optional<int> NotifyServiceRun::Stop(ChildProcess::Millis timeout) {
    m_process->Signal(SIGTERM);
    return m_process->Wait(timeout);
}

std::string NotifyServiceRun::Corbaloc() const {
    const std::string address = m_ssl_port == 0 ? "iiop:127.0.0.1:" + std::to_string(m_port)
                                                : "ssliop:127.0.0.1:" + std::to_string(m_ssl_port);
    return "corbaloc:" + address + "/NotifyEventChannelFactory";
}

std::string NotifyServiceRun::Said() const {
    return m_said + m_process->Err();
}

}  // namespace qv_test
