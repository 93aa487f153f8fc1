#include "demo/agent/startup_checks.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/corba_config_items.h"
#include "platform/environment.h"
#include "standalone/user_file.h"
#include "standalone/users_file.h"

namespace qv_demo {
namespace {

std::string ConfigFileName() {
    const char* const file = std::getenv("QV_AGENT_CONFIG");
    return file != nullptr && *file != '\0' ? file : "the configuration file";
}

/// The errno with which binding a socket to that address fails; 0 when it works.
int BindError(const addrinfo& address) {
    const int fd = ::socket(address.ai_family, address.ai_socktype, address.ai_protocol);
    if (fd < 0) {
        return errno;
    }
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const int error = ::bind(fd, address.ai_addr, address.ai_addrlen) == 0 ? 0 : errno;
    ::close(fd);
    return error;
}

}  // namespace

void CheckConfiguration() {
    std::vector<NS_BUNDLEMGR1::NameValueStru> items;
    if (!NS_BUNDLEMGR1::CorbaConfigItems::Instance()->GetCorbaConfigItems(items) || items.empty()) {
        throw StartError(ConfigFileName() + " yields no usable setting; see the lines above");
    }
    if (NS_BUNDLEMGR1::GetXDENEnvironment().empty()) {
        throw StartError("the root of the installation is not set; give env_root in the [platform] part of " +
                         ConfigFileName() + ", or the environment variable QV_ENV_ROOT");
    }
}

void CheckLogDirectory() {
    const std::string directory = NS_BUNDLEMGR1::GetNBILogPath();
    const std::string probe = directory + "/.write-test-" + std::to_string(::getpid());
    const int fd = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        const std::string reason = std::strerror(errno);
        throw StartError("the log directory " + directory + " can't be written to (" + reason +
                         "); choose another one with --log-dir or log_dir in " + ConfigFileName());
    }
    ::close(fd);
    ::unlink(probe.c_str());
}

void CheckUsers() {
    const std::string file = qv_standalone::UsersFile();
    if (file.empty()) {
        throw StartError("nobody could log in: give users_file in the [platform] part of " +
                         ConfigFileName() + ", and make that file with qv_user add");
    }
    try {
        qv_standalone::UserFile::Load(file);
    } catch (const qv_standalone::UserFileError& e) {
        throw StartError(e.what());
    }
}

std::string WhyNotListening(const std::string& address, const std::string& setting) {
    const std::size_t colon = address.rfind(':');
    const std::string host = address.substr(0, colon);
    const std::string port = colon == std::string::npos ? "0" : address.substr(colon + 1);
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    const int resolved = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
    if (resolved != 0) {
        return "the host name " + host + " can't be resolved (" + ::gai_strerror(resolved) +
               "); set CORBAAgent_Host in " + ConfigFileName() + " to an address of this machine";
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> guard(found, ::freeaddrinfo);
    switch (const int error = BindError(*found); error) {
        case 0:
            return "";
        case EADDRINUSE:
            return "port " + port + " of " + host +
                   " is in use by another process; end that one, or choose another " + setting + " in " +
                   ConfigFileName();
        case EADDRNOTAVAIL:
            return host + " is no address of this machine; correct CORBAAgent_Host in " + ConfigFileName();
        default:
            return "nothing can listen on " + address + ": " + std::strerror(error);
    }
}

}  // namespace qv_demo
