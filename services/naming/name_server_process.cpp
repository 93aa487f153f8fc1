#include "services/naming/name_server_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "services/naming/common_parts.h"

namespace qv_naming {
namespace {

constexpr int kExecFailed = 127;

bool IsProgram(const std::string& path) {
    return access(path.c_str(), X_OK) == 0;
}

// Runs in the child between fork and exec: async-signal-safe calls only.
[[noreturn]] void BecomeNameServer(pid_t parent, int output, char* const* argv, char* const* environment) {
    sigset_t none;
    sigemptyset(&none);
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGPIPE}) {
        signal(number, SIG_DFL);
    }
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // A front that was killed must not leave a server behind. It may have died before the request took
    // effect.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent) {
        _exit(kExecFailed);
    }
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execve(argv[0], argv, environment);
    _exit(kExecFailed);
}

// The front alone decides how the server is set up: no configuration file and no variable of the ORB gets
// through.
std::vector<std::string> ServerEnvironment(const std::vector<std::string>& variables) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('=') + 1);
        const bool replaced =
            std::any_of(variables.begin(), variables.end(),
                        [&](const std::string& variable) { return variable.rfind(name, 0) == 0; });
        if (text.rfind("ORB", 0) != 0 && text.rfind("OMNI", 0) != 0 && !replaced) {
            result.push_back(text);
        }
    }
    result.insert(result.end(), variables.begin(), variables.end());
    result.emplace_back("OMNIORB_CONFIG=/dev/null");
    return result;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

ProcessEnd Describe(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return {128 + number, "signal " + std::to_string(number) + " (" + strsignal(number) + ")"};
    }
    return {WEXITSTATUS(status), "exit code " + std::to_string(WEXITSTATUS(status))};
}

}  // namespace

std::string FindNameServer() {
    if (const char* given = std::getenv("QV_OMNINAMES"); given != nullptr && *given != '\0') {
        if (!IsProgram(given)) {
            throw StartError(
                "QV_OMNINAMES names \"" + std::string(given) +
                "\", which is not a program this user can run. Correct the variable or unset it.");
        }
        return given;
    }
    const char* path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (!folder.empty() && IsProgram(folder + "/omniNames")) {
            return folder + "/omniNames";
        }
    }
    if (IsProgram("/usr/bin/omniNames")) {
        return "/usr/bin/omniNames";
    }
    throw StartError(
        "The program omniNames, which does the work of the naming service, is not installed. Install "
        "the package omniorb-nameserver, or name the program in QV_OMNINAMES.");
}

NameServerProcess::NameServerProcess(const std::vector<std::string>& command,
                                     const std::vector<std::string>& variables) {
    std::vector<std::string> arguments = command;
    std::vector<std::string> environment = ServerEnvironment(variables);
    const std::vector<char*> argv = Pointers(arguments);
    const std::vector<char*> envp = Pointers(environment);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw StartError(std::string("No pipe to the name server could be made: ") + std::strerror(errno) +
                         ". Close other programs or raise the limit of open files.");
    }
    const pid_t self = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        BecomeNameServer(self, ends[1], argv.data(), envp.data());
    }
    const int reason = errno;
    close(ends[1]);
    output_ = ends[0];
    if (pid_ < 0) {
        close(output_);
        throw StartError(std::string("The name server could not be started: ") + std::strerror(reason) +
                         ". Close other programs or raise the limit of processes.");
    }
    fcntl(output_, F_SETFL, O_NONBLOCK);
}

NameServerProcess::~NameServerProcess() {
    Kill();
    close(output_);
}

std::string NameServerProcess::ReadOutput() const {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t got = read(output_, buffer, sizeof buffer);
        if (got > 0) {
            text.append(buffer, static_cast<std::size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            return text;
        }
    }
}

void NameServerProcess::Signal(int signal) const {
    if (!end_) {
        kill(pid_, signal);
    }
}

void NameServerProcess::Collect(int options) {
    if (end_) {
        return;
    }
    int status = 0;
    pid_t got = 0;
    do {
        got = waitpid(pid_, &status, options);
    } while (got < 0 && errno == EINTR);
    if (got == pid_) {
        end_ = Describe(status);
    } else if (got < 0) {
        end_ = ProcessEnd{kExecFailed, std::string("an unknown end: ") + std::strerror(errno)};
    }
}

const std::optional<ProcessEnd>& NameServerProcess::TryWait() {
    Collect(WNOHANG);
    return end_;
}

const ProcessEnd& NameServerProcess::Kill() {
    Signal(SIGKILL);
    Collect(0);
    return *end_;
}

}  // namespace qv_naming
