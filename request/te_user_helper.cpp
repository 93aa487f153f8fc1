#include "request/te_user_helper.h"

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "corbalogutil";
constexpr int kCorbaExceptionLine = 156;
constexpr int kOtherExceptionLine = 159;

std::string NameOf(PortableServer::POA_ptr poa) {
    const CORBA::String_var name = poa->the_name();
    return name.in() ? name.in() : "";
}

/// The POA of the request that the calling thread serves, nil when the ORB can't tell.
PortableServer::POA_ptr CurrentPoa(CORBA::ORB_ptr orb) {
    if (CORBA::is_nil(orb)) {
        throw CORBA::INV_OBJREF();
    }
    const CORBA::Object_var object = orb->resolve_initial_references("POACurrent");
    const PortableServer::Current_var current = PortableServer::Current::_narrow(object.in());
    return CORBA::is_nil(current.in()) ? PortableServer::POA::_nil() : current->get_POA();
}

std::string CallerName() {
    CorbaBaseAgentConfig* const config = CorbaBaseAgentConfig::Instance();
    const CORBA::ORB_var orb = config ? config->GetOrb() : CORBA::ORB::_nil();  // released last
    const PortableServer::POA_var poa = CurrentPoa(orb.in());
    if (CORBA::is_nil(poa.in())) {
        return "";
    }
    std::string name = NameOf(poa.in());
    if (name == "iterator" || name == "session") {
        const PortableServer::POA_var parent = poa->the_parent();
        const CORBA::String_var parentName =
            CORBA::is_nil(parent.in()) ? static_cast<char*>(nullptr) : parent->the_name();
        if (parentName.in()) {
            name = parentName.in();
        }
    }
    return name;
}

}  // namespace

std::string TEUserHelper::GetNmsIPAddrByContext() {
    try {
        return CallerName();
    } catch (CORBA::Exception& ex) {
        LogQuietly([&ex] {
            SetPos(kSourceFile, kCorbaExceptionLine);
            TaException(ex, "[TEUserHelper::GetNmsIPAddrByContext] Get nms ip address failed!");
        });
    } catch (...) {
        LogQuietly([] {
            SetPos(kSourceFile, kOtherExceptionLine);
            TaTrace("[TEUserHelper::GetNmsIPAddrByContext] Unknown exception occurred!");
        });
    }
    return "";
}

}  // namespace NS_CORBA
