#pragma once

#include <stdexcept>
#include <string>
#include <thread>

#include "agent/agentserver.h"
#include "agent/corbabaseagentconfig.h"
#include "tests/support/config_items.h"
#include "tests/support/free_port.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/request/gate_servant.h"

namespace qv_test {

/// Settings of an agent on a free port of this machine, without companion services and thread pool.
inline void SetAgentItems(ScopedConfigItems& config, bool statistics) {
    config.Set("CORBAAgent_Host", "127.0.0.1");
    config.Set("CORBAAgent_Port", std::to_string(FreePort()));
    config.Set("NON_Profile", "/dev/null");
    config.Set("ORBThreadPoolEnable", "0");
    config.Set("IsInterceptorEnabled", statistics ? "1" : "0");
}

/// An agent with one object behind its interceptor, up from construction to destruction. An ORB takes the
/// interceptor once, so there is one GateAgent in a process.
class GateAgent {
  public:
    GateAgent() {
        if (!Config().Init("gate_bundle")) {
            throw std::runtime_error("the agent did not come up");
        }
        const PortableServer::POA_var root = Config().GetRootPoa();
        const PortableServer::ObjectId_var id = root->activate_object(&servant);
        const CORBA::Object_var object = root->id_to_reference(id.in());
        gate = GateTest::Gate::_unchecked_narrow(object.in());
        const CORBA::ORB_var orb = Config().GetOrb();
        const CORBA::String_var text = orb->object_to_string(object.in());
        ior = text.in();
        if (NS_CORBA::AgentServer::Activate() != 0) {
            throw std::runtime_error("requests are not let in");
        }
        m_server = std::thread([] { NS_CORBA::AgentServer::Run(); });
    }

    ~GateAgent() {
        gate = GateTest::Gate::_nil();
        NS_CORBA::AgentServer::ShutDown();
        m_server.join();
        NS_CORBA::AgentServer::Destroy();
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
    }

    GateAgent(const GateAgent&) = delete;
    GateAgent& operator=(const GateAgent&) = delete;

    static NS_CORBA::CorbaBaseAgentConfig& Config() { return *NS_CORBA::CorbaBaseAgentConfig::Instance(); }

  private:
    TempDir m_root;
    ScopedEnv m_rootName{"QV_ENV_ROOT", m_root.str()};  // there has to be an installation, if an empty one

  public:
    GateServant servant;
    GateTest::Gate_var gate;  ///< for calls from this process
    std::string ior;          ///< for calls from others

  private:
    std::thread m_server;
};

}  // namespace qv_test
