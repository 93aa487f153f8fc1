// What the two ORBs spell differently, in one place. Everything else in the tree is written to the OMG C++
// mapping and to TAO's header names.
#pragma once

#include <tao/DynamicAny/DynamicAny.h>
#include <tao/ORB.h>
#include <tao/PI_Server/PI_Server.h>

#include <string>

#include "orb/export.h"

namespace qv_orb {

/// Text of an exception for a log line: its repository id and, for a system exception, the minor code with
/// its meaning where one is known and the completion status. Never fails for lack of a meaning.
QV_ORB_API std::string ExceptionText(const CORBA::Exception& ex);

/// At most `count` requests are in servants at once; 0 lifts the limit. Takes effect with the next ORB that
/// CORBA::ORB_init makes. A thread that waits in an outgoing call does not count, so a callback that arrives
/// meanwhile is served even with a limit of one. Not thread-safe: call it before CORBA::ORB_init.
QV_ORB_API void SetServantThreads(unsigned count);

/// Asks the ORB to publish addresses rather than host names where it offers that choice.
QV_ORB_API void SetIpFlag(bool on);

/// The caller's address as "host:port"; empty for a collocated call. Valid at every interception point.
QV_ORB_API std::string PeerAddress(PortableInterceptor::ServerRequestInfo_ptr info);

/// The minor code that an ORB-internal failure at `location` with the system error `error_number` carries:
/// the location in the upper bits, an encoding of the error in the lower seven.
QV_ORB_API CORBA::ULong TaoMinorCode(CORBA::ULong location, int error_number);

/// A DynAny with the type and value of `value`, which it copies. The caller ends it with destroy() and
/// releases it. Raises DynamicAny::DynAnyFactory::InconsistentTypeCode or a system exception for a type or
/// value that no DynAny can hold; BAD_INV_ORDER may come while the process has no ORB. Thread-safe.
QV_ORB_API DynamicAny::DynAny_ptr MakeDynAny(const CORBA::Any& value);

/// Where the seam reports what it has to say to an operator (an option without effect, an unknown one). The
/// default writes one line to standard error. Not thread-safe: call it before CORBA::ORB_init.
using DiagnosticSink = void (*)(const std::string& line);
QV_ORB_API void SetDiagnosticSink(DiagnosticSink sink);  ///< null brings the default back

}  // namespace qv_orb
