#include "services/naming/naming_front.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "services/common/operator_line.h"
#include "services/common/service_manager.h"
#include "services/common/start_error.h"
#include "services/common/text_file.h"
#include "services/naming/locate_probe.h"
#include "services/naming/server_command.h"
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
        "copy in its place" +
        (data.HasBackup() ? ", such as " + data.BackupFile().string() : "") +
        ", or move it away to start with no bindings.");
}

}  // namespace

void Tell(const std::string& sentence) {
    qv_service::WriteOperatorLine("Naming_Service", sentence);
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
    const qv_ssl::SslSettings* const ssl = ssl_ ? &ssl_->settings : nullptr;
    std::vector<std::string> command = ServerCommand(settings_, ssl, data.Path(), addresses);
    command.insert(command.begin(), program);

    StartGuard guard(data);
    NameServerProcess server(command,
                             ssl_ ? SslVariables(settings_, ssl_library_) : std::vector<std::string>{});
    if (!WaitUntilServing(server, data, addresses.front())) {
        return Stop(server);
    }
    Publish();
    guard.Succeeded();
    const std::string serving =
        "serving " + WhereItServes(settings_, ssl) + ", bindings in " + data.Path().string();
    std::printf("Naming_Service: %s\n", serving.c_str());
    std::fflush(stdout);
    if (const std::string untold = qv_service::TellReady(serving); !untold.empty()) {
        Tell(untold);
    }
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
    qv_service::TellStopping();
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
