#pragma once

#include <json/value.h>
#include <tao/PI_Server/PI_Server.h>

#include <string>

/// Reports each request as one span to the platform's call chain library.
///
/// All of it belongs to the thread of the request: request and reply of one call run on one thread, so
/// nothing is shared and no lock is needed. While the platform has tracing off, nothing is done. What the
/// call chain library or the ORB raises passes to the caller.
namespace NS_CORBA {

/// Opens the span of a request (0), or closes and reports that of a reply (1) or an exception (2); does
/// nothing for any other type. A reply without `info` reports nothing.
void WriteCallChain(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType);

/// Gives the calling thread new ids, as a request always starts a chain of its own, and notes the time. A
/// failure is told in the debug channel.
void SetOriginCallChain();

/// The span of the calling thread's ids, which takes the noted time with it. Null when tracing is off.
Json::Value MakeSpan(const std::string& interfaceName, const std::string& resultCode);

/// When the span began and when this was called, with the caller's address. Forgets when it began.
Json::Value MakeSpanInfo(const std::string& traceId);

}  // namespace NS_CORBA
