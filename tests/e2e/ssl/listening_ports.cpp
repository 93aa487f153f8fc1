#include "tests/e2e/ssl/listening_ports.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace qv_e2e {
namespace {

namespace fs = std::filesystem;

/// The files that the process has open which are sockets, as "socket:[NUMBER]".
std::set<std::string> Sockets(pid_t process) {
    std::set<std::string> sockets;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
        std::error_code gone;
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        if (target.rfind("socket:", 0) == 0) {
            sockets.insert(target);
        }
    }
    return sockets;
}

/// Adds the ports of those sockets that listen, out of a table of the kernel.
void AddListening(const char* table, const std::set<std::string>& sockets, std::set<int>& ports) {
    std::ifstream in(table);
    std::string line;
    std::getline(in, line);  // the columns' names
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string number, local, remote, state, queues, timer, retransmitted, user, timeout, inode;
        words >> number >> local >> remote >> state >> queues >> timer >> retransmitted >> user >> timeout >>
            inode;
        if (state == "0A" && sockets.count("socket:[" + inode + "]") > 0) {
            ports.insert(std::stoi(local.substr(local.rfind(':') + 1), nullptr, 16));
        }
    }
}

}  // namespace

std::set<int> ListeningPorts(pid_t process) {
    const std::set<std::string> sockets = Sockets(process);
    std::set<int> ports;
    AddListening("/proc/net/tcp", sockets, ports);
    AddListening("/proc/net/tcp6", sockets, ports);
    return ports;
}

}  // namespace qv_e2e
