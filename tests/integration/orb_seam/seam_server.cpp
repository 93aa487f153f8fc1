#include "seam_server.h"

#include <algorithm>
#include <stdexcept>

#include "calls.h"
#include "orb/portability.h"
#include "tests/support/child_process.h"
#include "tests/support/free_port.h"

namespace qv_test {
namespace {

class ScriptedInitializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        Run(initializer_script().pre_init, info);
    }
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        Run(initializer_script().post_init, info);
    }

  private:
    static void Run(const InitializerScript::Action& action, PortableInterceptor::ORBInitInfo_ptr info) {
        if (action) {
            action(info);
        }
    }
};

}  // namespace

std::atomic<int> Probe::s_alive{0};

void Events::Add(const std::string& event) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_events.push_back(event);
}

Strings Events::All() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_events;
}

bool Events::Contains(const std::string& event) const {
    const Strings all = All();
    return std::find(all.begin(), all.end(), event) != all.end();
}

void Events::Clear() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_events.clear();
}

void Probe::Do(const char* point, const Action& action, Info info) {
    TakeTurns();
    if (action) {
        try {
            action(info);
        } catch (...) {
            m_events.Add(m_name + "." + point);
            TakeTurns();
            throw;
        }
    }
    m_events.Add(m_name + "." + point);
    TakeTurns();
}

InitializerScript& initializer_script() {
    static InitializerScript script;
    return script;
}

void RegisterScriptedInitializer() {
    static const bool registered = [] {
        const PortableInterceptor::ORBInitializer_var initializer = new ScriptedInitializer;
        PortableInterceptor::register_orb_initializer(initializer.in());
        return true;
    }();
    static_cast<void>(registered);
}

CORBA::ORB_ptr InitOrb(const Strings& args, Strings* rest, const char* id) {
    Strings all = {"test"};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& arg : all) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    int argc = static_cast<int>(all.size());
    const CORBA::ORB_ptr orb = CORBA::ORB_init(argc, argv.data(), id);
    if (rest != nullptr) {
        rest->assign(argv.begin() + 1, argv.begin() + argc);
    }
    return orb;
}

SeamServer::SeamServer(const Options& options) : m_port(options.port != 0 ? options.port : FreePort()) {
    RegisterScriptedInitializer();
    initializer_script().pre_init = [&](PortableInterceptor::ORBInitInfo_ptr info) {
        RegisterInterceptors(options, info);
    };
    qv_orb::SetServantThreads(options.servant_threads);
    Strings args = {"-ORBEndpoint", "iiop://127.0.0.1:" + std::to_string(m_port)};
    if (options.ssl_port != 0) {
        args.back() += "/ssl_port=" + std::to_string(options.ssl_port);
    }
    args.insert(args.end(), options.args.begin(), options.args.end());
    m_orb = InitOrb(args);
    initializer_script() = {};
    const CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
    m_root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = m_root->the_POAManager();
    manager->activate();
    target = Activate(m_root.in(), &servant);
    there = Activate(m_root.in(), &elsewhere);
}

SeamServer::~SeamServer() {
    target = Seam::Target::_nil();
    there = Seam::Target::_nil();
    m_orb->destroy();
    qv_orb::SetServantThreads(0);
}

void SeamServer::RegisterInterceptors(const Options& options, PortableInterceptor::ORBInitInfo_ptr info) {
    for (unsigned i = 0; i < options.slots; ++i) {
        const PortableInterceptor::SlotId id = info->allocate_slot_id();
        slot = i == 0 ? id : slot;
    }
    if (options.intercept) {
        const PortableInterceptor::ServerRequestInterceptor_var first = a = new Probe("A", events);
        const PortableInterceptor::ServerRequestInterceptor_var second = b = new Probe("B", events);
        info->add_server_request_interceptor(first.in());
        info->add_server_request_interceptor(second.in());
    }
}

Seam::Target_ptr SeamServer::Activate(PortableServer::POA_ptr poa,
                                      PortableServer::Servant servant_to_activate) {
    const PortableServer::ObjectId_var id = poa->activate_object(servant_to_activate);
    const CORBA::Object_var object = poa->id_to_reference(id.in());
    return Seam::Target::_unchecked_narrow(object.in());
}

std::string SeamServer::Ior(CORBA::Object_ptr object) {
    TakeTurns();
    const CORBA::String_var text = m_orb->object_to_string(object);
    return text.in();
}

std::string SeamServer::Remote(const std::string& operation, const std::string& argument) {
    return RemoteCall(ior(), operation, argument);
}

std::string SeamServer::Collocated(const std::string& operation, const std::string& argument) {
    return CallByName(target.in(), operation, argument);
}

std::string PeerProgram() {
    return ORB_SEAM_PEER;
}

std::string RemoteCall(const std::string& ior, const std::string& operation, const std::string& argument) {
    const RunResult result = Run({PeerProgram(), "call", ior, operation, argument});
    if (result.code != 0) {
        throw std::runtime_error("the peer failed: " + result.err);
    }
    TakeTurns();
    return result.out.substr(0, result.out.find('\n'));
}

}  // namespace qv_test
