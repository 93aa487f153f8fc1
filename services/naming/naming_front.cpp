#include "services/naming/naming_front.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "orb/ssl/tls_setup.h"
#include "services/common/start_error.h"
#include "services/common/text_file.h"
#include "services/naming/locate_probe.h"
#include "services/naming/ssl_library.h"

namespace qv_naming {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kLockPatience{2000};
constexpr milliseconds kStartLimit{30000};
constexpr milliseconds kProbeLimit{1000};
constexpr milliseconds kProbePause{10};
constexpr milliseconds kStopLimit{5000};
constexpr milliseconds kForever{-1};

constexpr const char* kReferencePurpose = "the reference of the naming service";
constexpr const char* kPidPurpose = "the process id of the naming service";

milliseconds LeftUntil(Clock::time_point deadline) {
    return std::max(milliseconds(0), std::chrono::duration_cast<milliseconds>(deadline - Clock::now()));
}

/// Puts the bindings back unless the start succeeded.
class StartGuard {
  public:
    explicit StartGuard(DataDirectory& data) : data_(data) { data_.Remember(); }
    StartGuard(const StartGuard&) = delete;
    StartGuard& operator=(const StartGuard&) = delete;
    ~StartGuard() {
        if (!succeeded_) {
            data_.RollBack();
        }
    }
    void Succeeded() {
        succeeded_ = true;
        data_.Commit();
    }

  private:
    DataDirectory& data_;
    bool succeeded_ = false;
};

[[noreturn]] void FailDamaged(const DataDirectory& data, const std::string& line) {
    throw StartError(
        "The binding file " + data.BindingFile().string() + " is damaged" +
        (line.empty() ? "" : " at " + line) +
        ", so bindings would be lost; the naming service does not run and left it as it is. Put a good "
        "copy in its place, such as " +
        data.BackupFile().string() + ", or move it away to start with no bindings.");
}

}  // namespace

void Tell(const std::string& sentence) {
    const std::string line = "Naming_Service: " + sentence + "\n";
    // One write per line, so that lines of several processes on one terminal stay whole. Nobody can be told
    // of a failure here.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

NamingFront::NamingFront(Settings settings) : settings_(std::move(settings)) {}

int NamingFront::Run() {
    TakeSignals();
    for (const std::string& sentence : settings_.ignored) {
        Tell(sentence);
    }
    const std::string program = FindNameServer();
    LoadSsl();
    if (!settings_.ior_file.empty()) {
        RequireWritable(settings_.ior_file, kReferencePurpose);
    }
    DataDirectory data(ChooseDataDirectory(settings_), kLockPatience);
    const AddressList addresses = ListenAddresses(settings_.host, settings_.port);
    if (ssl_) {
        ListenAddresses(settings_.host, settings_.ssl_port);
    }
    if (!settings_.pid_file.empty()) {
        ReplaceTextFile(settings_.pid_file, std::to_string(getpid()) + "\n", kPidPurpose);
    }
    if (const std::string repaired = data.Repair(); !repaired.empty()) {
        Tell(repaired);
    }
    std::vector<std::string> command = ServerCommand(data, addresses);
    command.insert(command.begin(), program);

    StartGuard guard(data);
    NameServerProcess server(command, ServerVariables());
    if (!WaitUntilServing(server, data, addresses.front())) {
        return Stop(server);
    }
    Publish();
    guard.Succeeded();
    std::printf("Naming_Service: serving %s, bindings in %s\n", Corbaloc().c_str(), data.Path().c_str());
    std::fflush(stdout);
    return Serve(server);
}

void NamingFront::TakeSignals() {
    // The starter may have had signals ignored or blocked; neither may keep this process from ending.
    signal(SIGCHLD, SIG_DFL);
    signal(SIGPIPE, SIG_IGN);
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGCHLD}) {
        sigaddset(&set, number);
    }
    sigprocmask(SIG_SETMASK, &set, nullptr);
    signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals_ < 0) {
        throw StartError(std::string("Signals cannot be received: ") + std::strerror(errno) +
                         ". Raise the limit of open files.");
    }
}

void NamingFront::LoadSsl() {
    if (settings_.ssl_port == 0) {
        return;
    }
    ssl_library_ = FindSslLibrary();
    ssl_ = qv_service::LoadSslProfile(settings_.ssl_profile);
    for (const std::string& remark : ssl_->remarks) {
        Tell(remark);
    }
}

std::string NamingFront::Corbaloc() const {
    const std::string host = settings_.host.empty() ? "*" : settings_.host;
    const auto of = [&](const char* protocol, unsigned port) {
        return std::string("corbaloc:") + protocol + ":" + host + ":" + std::to_string(port) + "/NameService";
    };
    if (!ssl_) {
        return of("iiop", settings_.port);
    }
    return of("ssliop", settings_.ssl_port) +
           (ssl_->settings.no_protection ? " and " + of("iiop", settings_.port) : "");
}

std::vector<std::string> NamingFront::ServerCommand(const DataDirectory& data,
                                                    const AddressList& addresses) const {
    const std::string port = std::to_string(settings_.port);
    const std::string ssl_port = std::to_string(settings_.ssl_port);
    std::vector<std::string> command{
        "-start", port, "-always", "-datadir", data.Path().string(), "-nohostname", "-ORBtraceLevel", "1"};
    const auto add = [&command](const char* option, const std::string& value) {
        command.insert(command.end(), {option, value});
    };
    for (const std::string& address : addresses) {
        add("-ORBendPoint", "giop:tcp:" + address + ":" + port);
    }
    std::string published = "giop:tcp:" + settings_.host + ":" + port;
    if (ssl_) {
        for (const std::string& address : addresses) {
            add("-ORBendPoint", "giop:ssl:" + address + ":" + ssl_port);
        }
        published += ",giop:ssl:" + settings_.host + ":" + ssl_port;
        add("-ORBclientTransportRule", ssl_->settings.no_protection ? "* unix,ssl,tcp" : "* unix,ssl");
        add("-ORBsslAcceptTimeOut", std::to_string(qv_ssl::kHandshakePatience.count()));
    }
    if (!addresses.front().empty()) {
        add("-ORBendPointPublish", published);
    }
    return command;
}

// The pass phrase is in the file alone: others may read the command line and, with the same user, the
// environment.
std::vector<std::string> NamingFront::ServerVariables() const {
    if (!ssl_) {
        return {};
    }
    const char* const others = std::getenv("LD_PRELOAD");
    return {"QV_NAMING_SSL_PROFILE=" + settings_.ssl_profile,
            "LD_PRELOAD=" + ssl_library_ + (others != nullptr ? std::string(":") + others : "")};
}

bool NamingFront::Answers(const std::string& address, milliseconds limit) const {
    return ssl_ ? RootContextAnswers(address, settings_.ssl_port, limit, ssl_->client.get())
                : RootContextAnswers(address, settings_.port, limit);
}

bool NamingFront::WaitUntilServing(NameServerProcess& server, const DataDirectory& data,
                                   const std::string& address) {
    const auto deadline = Clock::now() + kStartLimit;
    while (Clock::now() < deadline) {
        const bool printed = !relay_.RootReference().empty();
        if (printed && Answers(address, std::min(kProbeLimit, LeftUntil(deadline)))) {
            RequireAlive(server, data);
            return true;
        }
        if (WaitForNews(server, printed ? kProbePause : LeftUntil(deadline)) == Wake::kStop) {
            return false;
        }
        RequireAlive(server, data);
    }
    throw StartError("The name server did not answer within " +
                     std::to_string(std::chrono::duration_cast<seconds>(kStartLimit).count()) +
                     " seconds and was ended. This machine may be overloaded, or bindings in " +
                     data.BindingFile().string() + " refer to a host that does not answer.");
}

void NamingFront::RequireAlive(NameServerProcess& server, const DataDirectory& data) {
    const bool ended = server.TryWait().has_value();
    Relay(server);
    if (relay_.DataDamaged()) {
        server.Kill();
        FailDamaged(data, relay_.DamagedLine());
    }
    if (ended) {
        const std::string& last = relay_.LastMessage();
        const std::string reason = last.empty() ? "it gave no reason" : "its last message: " + last;
        throw StartError("The name server ended before it could serve (" + server.TryWait()->text + "; " +
                         reason +
                         "), so there is no naming service. Check the messages above and the files in " +
                         data.Path().string() + ".");
    }
}

void NamingFront::Publish() const {
    if (!settings_.ior_file.empty()) {
        ReplaceTextFile(settings_.ior_file, relay_.RootReference() + "\n", kReferencePurpose);
    }
}

int NamingFront::Serve(NameServerProcess& server) {
    for (;;) {
        if (WaitForNews(server, kForever) == Wake::kStop) {
            return Stop(server);
        }
        const bool ended = server.TryWait().has_value();
        Relay(server);
        if (ended) {
            const ProcessEnd& end = *server.TryWait();
            Tell("The name server ended by itself (" + end.text +
                 "), so nothing can be looked up any more. The bindings are kept; start the naming service "
                 "again.");
            return end.exit_code == 0 ? kExitFailure : end.exit_code;
        }
    }
}

int NamingFront::Stop(NameServerProcess& server) {
    server.Signal(SIGTERM);
    const auto deadline = Clock::now() + kStopLimit;
    while (!server.TryWait() && Clock::now() < deadline) {
        WaitForNews(server, LeftUntil(deadline));
        Relay(server);
    }
    server.Kill();
    return 0;
}

NamingFront::Wake NamingFront::WaitForNews(const NameServerProcess& server, milliseconds limit) {
    pollfd entries[2] = {{signals_, POLLIN, 0}, {server.Output(), POLLIN, 0}};
    const int ready = poll(entries, 2, static_cast<int>(limit.count()));
    Wake wake = ready == 0 ? Wake::kTimeout : Wake::kServerOutput;
    signalfd_siginfo info{};
    while (read(signals_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo != SIGCHLD) {
            wake = Wake::kStop;
        }
    }
    return wake;
}

void NamingFront::Relay(const NameServerProcess& server) {
    for (const std::string& line : relay_.Take(server.ReadOutput(), Clock::now())) {
        Tell("name server: " + line);
    }
}

}  // namespace qv_naming
