#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "agent/corbabaseagentconfig.h"
#include "callerS.h"
#include "request/te_user_helper.h"
#include "tests/support/free_port.h"

namespace qv_test {

/// Answers what it finds out about its caller.
class CallerServant : public POA_QvCaller {
  public:
    std::function<std::string()> ask = &NS_CORBA::TEUserHelper::GetNmsIPAddrByContext;

    char* who() override { return CORBA::string_dup(ask().c_str()); }
};

/// An object of a servant, active from construction to destruction.
class ActiveCaller {
  public:
    /// Under an id that `poa` assigns.
    ActiveCaller(PortableServer::POA_ptr poa, CallerServant& servant)
        : m_poa(PortableServer::POA::_duplicate(poa)), m_id(m_poa->activate_object(&servant)) {}
    /// Under the id `id`, for a POA that leaves ids to its user.
    ActiveCaller(PortableServer::POA_ptr poa, CallerServant& servant, const char* id)
        : m_poa(PortableServer::POA::_duplicate(poa)), m_id(PortableServer::string_to_ObjectId(id)) {
        m_poa->activate_object_with_id(m_id.in(), &servant);
    }
    ~ActiveCaller() { m_poa->deactivate_object(m_id.in()); }
    ActiveCaller(const ActiveCaller&) = delete;
    ActiveCaller& operator=(const ActiveCaller&) = delete;

    CORBA::Object_var Reference() const { return m_poa->id_to_reference(m_id.in()); }

    std::string Call() const {
        const CORBA::Object_var object = Reference();
        const QvCaller_var caller = QvCaller::_narrow(object.in());
        const CORBA::String_var answer = caller->who();
        return answer.in();
    }

  private:
    PortableServer::POA_var m_poa;
    PortableServer::ObjectId_var m_id;
};

/// The agent's ORB with POA trees as bundles make them for their clients, from construction to destruction.
/// Any thread may call its objects.
class ClientTree {
  public:
    ClientTree() {
        const std::string endpoint = "iiop://127.0.0.1:" + std::to_string(FreePort());
        std::vector<std::string> arguments{"-ORBId", "client-tree", "-ORBEndpoint", endpoint};
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        int argc = static_cast<int>(argv.size());
        argv.push_back(nullptr);
        m_orb = CORBA::ORB_init(argc, argv.data());
        const CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
        m_root = PortableServer::POA::_narrow(object.in());
        PortableServer::POAManager_var(m_root->the_POAManager())->activate();
        NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(m_orb.in());
    }
    ~ClientTree() {
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        m_root = PortableServer::POA::_nil();
        m_orb->destroy();
    }
    ClientTree(const ClientTree&) = delete;
    ClientTree& operator=(const ClientTree&) = delete;

    PortableServer::POA_ptr Root() { return m_root.in(); }

    /// The POA at `path` below the root POA, with all on its way, made when it isn't there.
    PortableServer::POA_var Poa(const std::vector<std::string>& path) {
        PortableServer::POA_var poa = PortableServer::POA::_duplicate(m_root.in());
        const PortableServer::POAManager_var manager = m_root->the_POAManager();
        for (const std::string& name : path) {
            try {
                poa = poa->find_POA(name.c_str(), false);
            } catch (const PortableServer::POA::AdapterNonExistent&) {
                poa = poa->create_POA(name.c_str(), manager.in(), CORBA::PolicyList());
            }
        }
        return poa;
    }

    /// Calls `servant` on the POA at `path`.
    std::string Call(const std::vector<std::string>& path, CallerServant& servant) {
        return ActiveCaller(Poa(path).in(), servant).Call();
    }

    std::string Ior(CORBA::Object_ptr object) {
        const CORBA::String_var ior = m_orb->object_to_string(object);
        return ior.in();
    }

  private:
    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_root;
};

}  // namespace qv_test
