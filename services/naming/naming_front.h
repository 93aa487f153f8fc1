// One run of the naming service, from the checks before the start to the end of the name server.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "services/common/listen_addresses.h"
#include "services/common/ssl_profile.h"
#include "services/naming/command_line.h"
#include "services/naming/data_directory.h"
#include "services/naming/line_relay.h"
#include "services/naming/name_server_process.h"

namespace qv_naming {

/// Starts the name server, publishes its reference once it answers, and stays with it until it is told to end
/// or the name server ends. To be used on the main thread of a process without other threads: it blocks
/// SIGTERM, SIGINT, SIGHUP and SIGCHLD and takes them itself. Messages go to standard error, the line that
/// the service is up to standard output.
class NamingFront {
  public:
    /// Keeps a copy of the settings. Does nothing else.
    explicit NamingFront(Settings settings);

    /// Returns the exit code of the process. Throws StartError for what went wrong before the service was up.
    int Run();

  private:
    enum class Wake { kStop, kServerOutput, kTimeout };

    void TakeSignals();
    void LoadSsl();
    bool Answers(const std::string& address, std::chrono::milliseconds limit) const;
    /// False when the process was told to end meanwhile.
    bool WaitUntilServing(NameServerProcess& server, const DataDirectory& data, const std::string& address);
    void RequireAlive(NameServerProcess& server, const DataDirectory& data);
    void Publish() const;
    int Serve(NameServerProcess& server);
    int Stop(NameServerProcess& server);

    Wake WaitForNews(const NameServerProcess& server, std::chrono::milliseconds limit);
    void Relay(const NameServerProcess& server);

    Settings settings_;
    std::optional<qv_service::SslProfile> ssl_;
    std::string ssl_library_;
    LineRelay relay_;
    int signals_ = -1;
};

/// Writes one line for the operator to standard error.
void Tell(const std::string& sentence);

}  // namespace qv_naming
