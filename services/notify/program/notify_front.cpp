#include "services/notify/program/notify_front.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include "orb/object_access.h"
#include "orb/portability.h"
#include "orb/request_hold.h"
#include "services/common/listen_addresses.h"
#include "services/common/operator_line.h"
#include "services/common/service_manager.h"
#include "services/common/ssl_profile.h"
#include "services/common/start_error.h"
#include "services/common/text_file.h"
#include "services/notify/program/data_directory.h"
#include "services/notify/program/naming_registration.h"
#include "services/notify/program/orb_start.h"

namespace qv_notify {

namespace {

using qv_service::StartError;

// What is under way when the service is told to end may take so long; what is kept is delivered at the next
// start.
constexpr std::chrono::milliseconds kGrace{1000};

sigset_t EndingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&set, number);
    }
    return set;
}

void WaitForSignal(OperatorLog& log) {
    const sigset_t set = EndingSignals();
    constexpr timespec kRound{5, 0};
    while (sigtimedwait(&set, nullptr, &kRound) < 0) {
        log.TellLeftOut();
    }
}

std::string Address(const Settings& settings) {
    return (settings.host.empty() ? "*" : settings.host) + ":" + std::to_string(settings.port);
}

// Lets what has been accepted reach the consumers that take it, within the time of grace. False when a call
// still hangs.
bool Drain(ServiceContext& service, SteadyTime deadline) {
    service.IntakePool().WaitUntilIdle(deadline);
    service.DeliveryPool().WaitUntilIdle(deadline);
    service.IntakePool().Stop();
    service.DeliveryPool().Stop();
    return service.IntakePool().WaitUntilIdle(deadline) && service.DeliveryPool().WaitUntilIdle(deadline);
}

void NoteOrderlyEnd(Store& store, OperatorLog& log) {
    try {
        store.NoteOrderlyEnd();
    } catch (const StoreError& error) {
        log.Tell("store", std::string(error.what()) +
                              " The next start will say that consumers may get an event twice.");
    }
}

void StopRequests(CORBA::ORB_ptr orb) {
    try {
        const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
        const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
        const PortableServer::POAManager_var manager = root->the_POAManager();
        manager->discard_requests(false);
    } catch (const CORBA::Exception&) {
        // It ends either way.
    }
}

void ServeRequests(CORBA::ORB_ptr orb) {
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
}

/// Brings to an end, within the time of grace, what runs; an orderly end is noted in the store.
void End(CORBA::ORB_ptr orb, ServiceContext& service, NamingRegistration* registration, Store* store,
         OperatorLog& log) {
    const auto deadline = std::chrono::steady_clock::now() + kGrace;
    if (registration != nullptr) {
        registration->Stop();
    }
    StopRequests(orb);
    const bool drained = Drain(service, deadline);
    if (drained && store != nullptr) {
        NoteOrderlyEnd(*store, log);
    }
    log.TellLeftOut(true);
    if (drained && (registration == nullptr || registration->WaitUntilEnded(deadline))) {
        orb->shutdown(false);
    }
}

}  // namespace

void Tell(const std::string& sentence) {
    qv_service::WriteOperatorLine("Notify_Service", sentence);
}

int TellFailure() {
    try {
        throw;
    } catch (const StartError& error) {
        Tell(error.what());
        return error.ExitCode();
    } catch (const CORBA::Exception& error) {
        Tell("An unexpected error ended the notification service: " + qv_orb::ExceptionText(error));
    } catch (const std::exception& error) {
        Tell(std::string("An unexpected error ended the notification service: ") + error.what());
    }
    return qv_service::kExitFailure;
}

void NotifyFront::CheckSurroundings() const {
    for (const std::string& sentence : m_settings.ignored) {
        Tell(sentence);
    }
    if (!m_settings.ior_file.empty()) {
        qv_service::RequireWritable(m_settings.ior_file, "the reference of the channel factory");
    }
    if (!m_settings.pid_file.empty()) {
        qv_service::RequireWritable(m_settings.pid_file, "the process id of the notification service");
    }
    if (m_settings.ssl_port) {
        qv_service::LoadSslProfile(m_settings.ssl_profile);
    }
}

void NotifyFront::Run() {
    const sigset_t signals = EndingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    CheckSurroundings();
    const std::unique_ptr<Store> store = OpenStore();
    OperatorLog log(Tell);
    // Who asks for a channel now is not to hear that it doesn't exist, and make another one.
    std::optional<qv_orb::RequestHold> hold(std::in_place);
    const CORBA::ORB_var orb = StartOrb();
    ServiceContext service(orb.in(), store.get(), log, m_settings.limits);

    try {
        Serve(orb.in(), service, store.get(), hold);
    } catch (...) {
        // Clients may have reached what refers to the rest, so nothing is taken apart.
        std::_Exit(TellFailure());
    }
}

void NotifyFront::Serve(CORBA::ORB_ptr orb, ServiceContext& service, Store* store,
                        std::optional<qv_orb::RequestHold>& hold) const {
    auto* const factory = new FactoryServant(service);
    const PortableServer::ServantBase_var count(factory);
    const CORBA::Object_var object = qv_orb::PublishUnderKey(orb, m_settings.factory_name, factory);
    const auto reference = CosNotifyChannelAdmin::EventChannelFactory_var(
        CosNotifyChannelAdmin::EventChannelFactory::_unchecked_narrow(object.in()));
    factory->SetReference(reference.in());
    const FactoryServant::Restored restored = Restore(*factory, store);

    ServeRequests(orb);
    hold.reset();
    const CORBA::String_var text = orb->object_to_string(reference.in());
    Announce(text.in(), qv_orb::EndpointOf(reference.in()), store, restored);
    std::optional<NamingRegistration> registration;
    if (m_settings.register_name) {
        registration.emplace(orb, reference.in(), m_settings.factory_name, service.Log(),
                             NamingRegistration::Pauses{});
    }

    WaitForSignal(service.Log());
    qv_service::TellStopping();
    End(orb, service, registration ? &*registration : nullptr, store, service.Log());
    // A client or the naming service may keep a thread; all that is to be kept is in the store.
    std::_Exit(0);
}

FactoryServant::Restored NotifyFront::Restore(FactoryServant& factory, Store* store) const {
    if (store == nullptr) {
        return {};
    }
    try {
        return factory.Restore(*store);
    } catch (const StoreError& error) {
        throw StartError(error.what());
    }
}

std::unique_ptr<Store> NotifyFront::OpenStore() const {
    if (!HasLastingAddress(m_settings)) {
        Tell(
            "without a port in -ORBEndpoint references change with each start, so persistent channels are "
            "not offered");
        return nullptr;
    }
    qv_service::ListenAddresses(m_settings.host, m_settings.port);
    if (m_settings.ssl_port) {
        qv_service::ListenAddresses(m_settings.host, *m_settings.ssl_port);
    }
    const std::filesystem::path file = PrepareStoreFile(ChooseDataDirectory(m_settings));
    try {
        return std::make_unique<Store>(file.string());
    } catch (const StoreError& error) {
        throw StartError(error.what());
    }
}

CORBA::ORB_ptr NotifyFront::StartOrb() const {
    try {
        return InitOrb(m_settings);
    } catch (const CORBA::BAD_PARAM&) {
        throw StartError(
            "The ORB doesn't understand one of its options, and the line before says which. Correct the "
            "command line; \"Notify_Service --help\" lists the options.",
            qv_service::kExitUsage);
    } catch (const CORBA::Exception& exception) {
        throw StartError("The ORB does not start (" + qv_orb::ExceptionText(exception) +
                         "). Check the -ORB options, " + "the end point " + Address(m_settings) +
                         " above all.");
    }
}

std::string NotifyFront::Place(const std::string& endpoint) const {
    if (m_settings.ssl_port && *m_settings.ssl_port == 0) {
        return m_settings.factory_name +
               " by SSL, at a port that the system has chosen and only the reference tells";
    }
    return Corbaloc(endpoint) + "/" + m_settings.factory_name;
}

std::string NotifyFront::Corbaloc(const std::string& endpoint) const {
    // What the command line leaves open, the ORB has chosen.
    const std::string host =
        m_settings.host.empty() ? endpoint.substr(0, endpoint.rfind(':')) : m_settings.host;
    if (m_settings.ssl_port) {
        return "corbaloc:ssliop:" + host + ":" + std::to_string(*m_settings.ssl_port);
    }
    const std::string port =
        m_settings.port == 0 ? endpoint.substr(endpoint.rfind(':') + 1) : std::to_string(m_settings.port);
    return "corbaloc:iiop:" + host + ":" + port;
}

void NotifyFront::Announce(const std::string& reference, const std::string& endpoint, const Store* store,
                           const FactoryServant::Restored& restored) const {
    if (!m_settings.ior_file.empty()) {
        qv_service::ReplaceTextFile(m_settings.ior_file, reference + "\n",
                                    "the reference of the channel factory");
    }
    if (!m_settings.pid_file.empty()) {
        qv_service::ReplaceTextFile(m_settings.pid_file, std::to_string(getpid()) + "\n",
                                    "the process id of the notification service");
    }
    std::string serving = "serving " + Place(endpoint);
    if (store != nullptr) {
        serving += ", " + std::to_string(restored.channels) + " channels, " +
                   std::to_string(restored.consumers) + " consumers and " + std::to_string(restored.events) +
                   " events kept in " + ChooseDataDirectory(m_settings).string();
    }
    std::printf("Notify_Service: %s\n", serving.c_str());
    std::fflush(stdout);
    if (const std::string untold = qv_service::TellReady(serving); !untold.empty()) {
        Tell(untold);
    }
}

}  // namespace qv_notify
