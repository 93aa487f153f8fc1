// One run of the notification service, from the checks before the start to its end.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "orb/request_hold.h"
#include "services/notify/program/command_line.h"
#include "services/notify/servants/factory_servant.h"

namespace qv_notify {

/// Blocks SIGTERM, SIGINT and SIGHUP in the calling thread, and so in all that it starts, and waits for them.
/// To be used on the main thread of a process without other threads. Messages go to standard error, the line
/// that the service is up to standard output.
class NotifyFront {
  public:
    explicit NotifyFront(Settings settings) : m_settings(std::move(settings)) {}

    /// Throws StartError for what goes wrong before there is anything that clients can reach. From then on it
    /// tells what goes wrong itself, and ends the process in any case.
    [[noreturn]] void Run();

  private:
    void CheckSurroundings() const;
    std::unique_ptr<Store> OpenStore() const;
    std::string Place(const std::string& endpoint) const;
    std::string Corbaloc(const std::string& endpoint) const;
    CORBA::ORB_ptr StartOrb() const;
    [[noreturn]] void Serve(CORBA::ORB_ptr orb, ServiceContext& service, Store* store,
                            std::optional<qv_orb::RequestHold>& hold) const;
    FactoryServant::Restored Restore(FactoryServant& factory, Store* store) const;
    void Announce(const std::string& reference, const std::string& endpoint, const Store* store,
                  const FactoryServant::Restored& restored) const;

    const Settings m_settings;
};

/// Writes one line for the operator to standard error.
void Tell(const std::string& sentence);

/// Tells of the exception that is being handled. Returns the exit code that goes with it.
int TellFailure();

}  // namespace qv_notify
