#include "naming_run.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "tests/support/free_port.h"

namespace qv_test {

NamingRun::NamingRun(std::string host) : m_host(std::move(host)), m_port(FreePort()) {
    m_options.working_dir = m_dir.File("bin");
    m_options.env["QV_NAMING_DATA"] = std::nullopt;
    std::filesystem::create_directory(m_options.working_dir);
}

void NamingRun::UseSsl(const std::string& profile) {
    m_ssl_port = m_ssl_port != 0 ? m_ssl_port : FreePort();
    m_profile = profile;
}

ChildProcess& NamingRun::Start(const std::vector<std::string>& further) {
    std::vector<std::string> arguments{QV_NAMING_SERVICE, "-ORBEndpoint",
                                       "iiop://" + m_host + ":" + std::to_string(m_port)};
    if (m_ssl_port != 0) {
        arguments.back() += "/ssl_port=" + std::to_string(m_ssl_port);
        arguments.insert(arguments.end(), {"-ORBSvcConf", m_profile});
    }
    arguments.insert(arguments.end(), {"-o", "../ns.ior"});
    arguments.insert(arguments.end(), further.begin(), further.end());
    m_service = std::make_unique<ChildProcess>(arguments, m_options);
    return *m_service;
}

bool NamingRun::StartAndWait(const std::vector<std::string>& further) {
    const bool ready = Start(further).WaitForOut(kReady);
    if (!ready) {
        ADD_FAILURE() << "not serving: " << m_service->Out() << m_service->Err();
    }
    return ready;
}

pid_t NamingRun::ServerPid() const {
    const std::string pid = std::to_string(m_service->pid());
    pid_t child = 0;
    std::ifstream("/proc/" + pid + "/task/" + pid + "/children") >> child;
    return child;
}

RunResult NamingRun::Client(const std::vector<std::string>& arguments, const std::string& host) const {
    std::vector<std::string> command{
        QV_NAMECLT, "-ORBInitRef",
        "NameService=corbaloc:iiop:" + host + ":" + std::to_string(m_port) + "/NameService"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return Run(command);
}

bool IsAlive(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(stat), {}};
    const auto name_end = text.rfind(") ");
    return name_end != std::string::npos && text[name_end + 2] != 'Z' && text[name_end + 2] != 'X';
}

bool PortIsFree(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool free = bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    return free;
}

std::string NodeName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

}  // namespace qv_test
