#include "demo/agent/client_poas.h"

#include <chrono>
#include <thread>

#include "logging/corbalogutil.h"

namespace qv_demo {
namespace {

constexpr std::chrono::milliseconds kPause{10};
constexpr int kMostPauses = 200;

PortableServer::POA_ptr CreateChild(PortableServer::POA_ptr parent, const char* name) {
    const PortableServer::POAManager_var manager = parent->the_POAManager();
    const CORBA::PolicyList no_policies;  // transient, ids of the system, servants retained
    return parent->create_POA(name, manager.in(), no_policies);
}

PortableServer::POA_ptr CreateClientPoa(PortableServer::POA_ptr parent, const std::string& identity) {
    for (int pauses = 0;; ++pauses) {
        try {
            return CreateChild(parent, identity.c_str());
        } catch (const PortableServer::POA::AdapterAlreadyExists&) {
            if (pauses == kMostPauses) {
                throw;
            }
        }
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace

std::string MakeIdentity(const std::string& user, const std::string& address) {
    return "<USERNAME_TAG>" + user + "</USERNAME_TAG><IPANDPORT_TAG>" + address + "</IPANDPORT_TAG>";
}

ClientPoas CreateClientPoas(PortableServer::POA_ptr parent, const std::string& identity) {
    ClientPoas poas;
    poas.client = CreateClientPoa(parent, identity);
    try {
        poas.session = CreateChild(poas.client.in(), "session");
        poas.iterator = CreateChild(poas.client.in(), "iterator");
    } catch (...) {
        DestroyClientPoas(poas);
        throw;
    }
    return poas;
}

void DestroyClientPoas(const ClientPoas& poas) {
    try {
        poas.client->destroy(true, false);
    } catch (CORBA::Exception& e) {
        TA_POS;
        NS_CORBA::TaException(e, "[DestroyClientPoas] Raised while a client's adapters were destroyed");
    }
}

}  // namespace qv_demo
