#include "tests/unit/agent/naming_server.h"

#include <stdexcept>

#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"

namespace qv_test {

NamingServer::NamingServer() : m_port(FreePort()) {
    const std::string port = std::to_string(m_port);
    const std::string log = m_dir.File("errors");
    m_process = std::make_unique<ChildProcess>(std::vector<std::string>{
        "omniNames", "-start", port, "-always", "-datadir", m_dir.str(), "-nohostname", "-errlog", log,
        "-ORBendPoint", "giop:tcp:127.0.0.1:" + port});
    const bool up = WaitFor([&] {
        const std::string text = ReadFile(log);
        const std::size_t start = text.find("IOR:");
        if (start == std::string::npos) {
            return false;
        }
        const std::size_t end = text.find_first_not_of("0123456789abcdefABCDEF", start + 4);
        m_ior = text.substr(start, end - start);
        return end != std::string::npos;
    });
    if (!up) {
        throw std::runtime_error("no naming service: " + ReadFile(log) + m_process->Err());
    }
}

}  // namespace qv_test
