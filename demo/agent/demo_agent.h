#pragma once

#include <tao/ORB.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "demo/agent/account_manager.h"
#include "demo/agent/accounts.h"
#include "demo/agent/attribute_manager.h"
#include "demo/agent/core/inventory.h"
#include "demo/agent/ems.h"
#include "demo/agent/event_sending.h"
#include "demo/agent/housekeeper.h"
#include "demo/agent/managers.h"
#include "demo/agent/options.h"
#include "demo/agent/oss_pinger.h"
#include "demo/agent/registration_keeper.h"
#include "demo/agent/request_hooks.h"

namespace qv_demo {

/// The agent from its start to its stop, in the order that the library asks of a bundle. One object in a
/// process, used by one thread, which has the signals blocked that end the process.
class DemoAgent {
  public:
    explicit DemoAgent(const Options& options) : options_(options) {}
    DemoAgent(const DemoAgent&) = delete;
    DemoAgent& operator=(const DemoAgent&) = delete;

    /// Serves requests when it returns. Raises StartError or InventoryError; call Stop then, too.
    void Start();

    /// Ends everything that was started. With a thread pool its threads go on until the process ends, so the
    /// caller ends it without leaving main and without destroying this object.
    void Stop();

  private:
    void BringUpOrb();
    void MakeServants();
    void RegisterManagers();
    void StartEvents();
    void ServeRequests();
    void SayWhereItIs() const;

    const Options options_;
    std::optional<Inventory> inventory_;
    std::optional<IteratorDirectory> iterators_;
    std::optional<SessionDirectory> sessions_;
    std::optional<Accounts> accounts_;
    std::optional<EventSending> events_;
    std::optional<Ems> ems_;
    std::map<std::string, std::unique_ptr<NS_CORBA::MgrFactory>> managers_;  // by their names
    RequestHooks hooks_{SteadyClock()};
    CORBA::Object_var factory_;
    std::optional<RegistrationKeeper> registration_;
    std::optional<Housekeeper> housekeeper_;
    std::optional<OssPinger> pinger_;
    std::thread orb_thread_;
    bool initialised_ = false;
    bool pool_ = true;
};

}  // namespace qv_demo
