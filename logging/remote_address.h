#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <string>

namespace NS_CORBA {

/// The caller of a request as RemoteAddress tells it, kept for no other record. Leaves `address` alone when
/// the ORB doesn't tell the POAs.
/// @return whether it does
bool CallerAddress(PortableInterceptor::ServerRequestInfo* info, std::string& address);

/// The caller of a request (0), as
/// "<USERNAME_TAG>user</USERNAME_TAG><IPANDPORT_TAG>host:port</IPANDPORT_TAG>": from the name of the client's
/// POA, otherwise from the thread's context. Keeps it for the record that ends the request on this thread, a
/// reply (1) or an exception (2), which takes it from there. Empty when the ORB doesn't tell the POAs or
/// nothing names a caller.
/// @param thread the low 32 bits of the calling thread's id, under which it is kept
std::string RemoteAddress(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                          int thread);

}  // namespace NS_CORBA
