// orb/portability.h for a real TAO.
#include "orb/portability.h"

#include <tao/DynamicAny/DynAnyFactory.h>

namespace qv_orb {

std::string ExceptionText(const CORBA::Exception& ex) { return ex._info().c_str(); }

// TAO serves requests on the threads that run the ORB, so their number is the limit.
void SetServantThreads(unsigned) {}

// set_ip_flag belongs to a patched TAO; a stock one publishes what the end point says.
void SetIpFlag(bool) {}

// TAO offers the peer's address only through its transport current, which has to be loaded as a service.
std::string PeerAddress(PortableInterceptor::ServerRequestInfo_ptr) { return ""; }

CORBA::ULong TaoMinorCode(CORBA::ULong location, int error_number) {
    return CORBA::SystemException::_tao_minor_code(location, error_number);
}

DynamicAny::DynAny_ptr MakeDynAny(const CORBA::Any& value) {
    TAO_DynAnyFactory factory;
    return factory.create_dyn_any(value);
}

// TAO writes its own messages through ACE's log.
void SetDiagnosticSink(DiagnosticSink) {}

}  // namespace qv_orb
