#include "demo/agent/demo_agent.h"

#include <chrono>

#include "agent/agentserver.h"
#include "agent/corbabaseagentconfig.h"
#include "agent/persistent_poa.h"
#include "demo/agent/console.h"
#include "demo/agent/event_manager.h"
#include "demo/agent/session_factory_servant.h"
#include "demo/agent/startup_checks.h"
#include "demo/agent/task_context.h"
#include "logging/logmgr.h"
#include "orb/object_access.h"
#include "platform/environment.h"
#include "request/corbasecurity.h"
#include "standalone/users_file.h"

namespace qv_demo {
namespace {

constexpr const char* kBundleName = "qv_demo_agent";
// The operation log passes over this name when it looks for the client's.
constexpr const char* kTopPoa = "M4400";
constexpr const char* kFactoryId = "EmsSessionFactory";

NS_CORBA::CorbaBaseAgentConfig& Config() {
    return *NS_CORBA::CorbaBaseAgentConfig::Instance();
}

std::string OwnAddress() {
    std::string location;
    std::string address;
    Config().GetEmsAdditionalInfo(location, address);
    return address;
}

/// The agent's address, with the port that was chosen where the configuration leaves it to the system.
std::string ListensOn(CORBA::Object_ptr factory) {
    std::string configured = OwnAddress();
    const std::size_t colon = configured.rfind(':');
    if (configured.substr(colon + 1) != "0") {
        return configured;
    }
    return Config().GetSSLMode() == 0
               ? qv_orb::EndpointOf(factory)
               : configured.substr(0, colon) + ", at an SSL port of the system's choice";
}

std::string WhyNoOrb() {
    const bool ssl = Config().GetSSLMode() != 0;
    std::string reason = WhyNotListening(OwnAddress(), ssl ? "CORBAAgent_SSLPort" : "CORBAAgent_Port");
    if (!reason.empty()) {
        return reason;
    }
    return std::string("the ORB can't be brought up; ") +
           (ssl ? "what it says of that stands above, and qv_ssl check looks at the SSL set-up"
                : "check CORBAAgent_Option and the hosts and ports in the configuration");
}

SessionLimits ConfiguredSessionLimits() {
    return {Config().GetMaxSession(), ToReleaseStrategy(Config().GetSessionReleaseStrategy()),
            std::chrono::seconds(Config().GetSilentTime())};
}

IteratorLimits ConfiguredIteratorLimits() {
    return {Config().IteratorNum(), Config().IteratorRestriction(), std::chrono::seconds(Config().TimeOut())};
}

}  // namespace

void DemoAgent::Start() {
    CheckConfiguration();
    CheckLogDirectory();
    CheckUsers();
    inventory_.emplace(Inventory::Load(options_.inventory));
    BringUpOrb();
    MakeServants();
    RegisterManagers();
    Config().SetReqInterceptorImpl(&hooks_);
    SayWhereItIs();
    registration_.emplace(factory_.in(), std::chrono::seconds(Config().TimeInterval()));
    StartEvents();
    ServeRequests();
    Say("ready");
}

void DemoAgent::BringUpOrb() {
    initialised_ = true;  // from here on there may be something to end
    RegisterTaskContext();
    if (!Config().Init(kBundleName)) {
        throw StartError(WhyNoOrb());
    }
    pool_ = Config().ORBThreadPool();
    if (!NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        throw StartError("the logs in " + NS_BUNDLEMGR1::GetNBILogPath() + " can't be opened");
    }
    NS_CORBA::CorbaSecurityMgr::Instance()->Init();
}

void DemoAgent::MakeServants() {
    const PortableServer::POA_var root = Config().GetRootPoa();
    const PortableServer::POA_var top = NS_CORBA::get_persistent_poa(root.in(), kTopPoa);
    if (CORBA::is_nil(top.in())) {
        throw StartError("the agent's object adapter can't be made; see corbadebug.log");
    }
    iterators_.emplace(ConfiguredIteratorLimits(), SteadyClock());
    sessions_.emplace(top.in(), ConfiguredSessionLimits(), *iterators_, SteadyClock());
    accounts_.emplace(qv_standalone::UsersFile());
    if (options_.events) {
        events_.emplace(*inventory_, Config().EmsName(), *sessions_, NS_BUNDLEMGR1::GetNBILogPath());
    }
    ems_.emplace(Ems{Config().EmsName(), *accounts_, *inventory_, *sessions_, *iterators_,
                     events_ ? &events_->source() : nullptr});
    PortableServer::ServantBase_var servant = new SessionFactoryServant(*ems_);
    factory_ = NS_CORBA::get_persistent_ref(top.in(), servant.in(), kFactoryId);
    if (CORBA::is_nil(factory_.in())) {
        throw StartError("the session factory can't be made; see corbadebug.log");
    }
}

void DemoAgent::RegisterManagers() {
    managers_["EMS"] = std::make_unique<ManagerFactory<EmsManager>>(*ems_);
    managers_["ManagedElement"] = std::make_unique<ManagerFactory<ManagedElementManager>>(*ems_);
    managers_["Account"] = std::make_unique<ManagerFactory<AccountManager>>(*ems_);
    managers_["Attribute"] = std::make_unique<ManagerFactory<AttributeManager>>(*ems_);
    if (events_) {
        managers_["Event"] = std::make_unique<ManagerFactory<EventManager>>(*ems_);
    }
    for (const auto& [name, factory] : managers_) {
        Config().RegisterMgr(name.c_str(), factory.get());
    }
}

void DemoAgent::StartEvents() {
    if (events_ && !events_->Start(std::chrono::seconds(Config().TimeInterval()))) {
        throw StartError("the threads that send events can't be started; see corbadebug.log");
    }
}

void DemoAgent::ServeRequests() {
    housekeeper_.emplace(*ems_);
    if (Config().GetEmsPingMode()) {
        pinger_.emplace(*ems_, std::chrono::seconds(Config().TimeInterval()));
    }
    if (NS_CORBA::AgentServer::Activate() != 0) {
        throw StartError("requests can't be let in; see corbadebug.log");
    }
    orb_thread_ = std::thread([] { NS_CORBA::AgentServer::Run(); });
}

void DemoAgent::SayWhereItIs() const {
    const std::string logs = NS_BUNDLEMGR1::GetNBILogPath();
    Say("listens on      " + ListensOn(factory_.in()));
    Say("EMS             " + Config().EmsName() + " with " + std::to_string(inventory_->size()) +
        " elements");
    Say("logs            " + logs +
        "/corbadebug.log (what the agent does), corbasys.log (its start and stop)");
    if (Config().IsInterceptorEnabled()) {
        Say("call counts     " + logs + "/CORBAAgentStatisticInfo.dat");
    }
}

void DemoAgent::Stop() {
    if (!initialised_) {
        return;
    }
    pinger_.reset();
    housekeeper_.reset();
    if (registration_) {
        registration_->Stop();
        Config().UnRegistEMSFactoryName();
    }
    if (events_) {
        events_->Stop();
    }
    if (orb_thread_.joinable()) {
        NS_CORBA::AgentServer::Discard();
        NS_CORBA::AgentServer::ShutDown();
    }
    NS_CORBA::CorbaSecurityMgr::Destroy();
    NS_CORBA::AgentServer::Destroy();
    if (orb_thread_.joinable() && !pool_) {
        orb_thread_.join();
    }
    for (const auto& entry : managers_) {
        Config().UnregisterMgr(entry.first.c_str());
    }
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    if (!orb_thread_.joinable()) {
        // Threads of a pool log until the process ends, and the log manager must not go away under them.
        NS_CORBA::CorbaLogMgr::Destroy();
    }
}

}  // namespace qv_demo
