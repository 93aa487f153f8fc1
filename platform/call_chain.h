#pragma once

#include <json/forwards.h>

#include <string>

#include "platform/export.h"

/// The platform's call chain library: distributed tracing of requests. What its operations raise is logged
/// and costs the operation's record what was still to come; the request is served all the same.
namespace xDENcommon {

/// The current call chain of one component. The ids that SetCallChainInfo stores on a thread are the ones
/// that the getters return on that thread. Owned by the library; any thread may call any operation.
class QV_API xDENCallChainInst {
  public:
    virtual ~xDENCallChainInst() = default;

    /// Makes these the calling thread's ids. 0 on success.
    virtual int SetCallChainInfo(const std::string& traceId, const std::string& parentId,
                                 const std::string& spanId) = 0;
    virtual std::string GetTraceId() = 0;   ///< the calling thread's
    virtual std::string GetParentId() = 0;  ///< the calling thread's
    virtual std::string GetSpanId() = 0;    ///< the calling thread's

    /// Hands a finished span over for transport. 0 on success.
    virtual int ReportSpan(const Json::Value& span, const Json::Value& extra) = 0;
};

/// Finds call chains. Any thread may ask.
class QV_API xDENCallChainInstMgr {
  public:
    xDENCallChainInstMgr() = delete;

    /// The call chain of the component `name`; null when tracing is off.
    static xDENCallChainInst* Instance(const std::string& name);
};

/// Makes ids. Any thread may ask.
class QV_API xDENCallChainHelper {
  public:
    xDENCallChainHelper() = delete;

    /// A new id; empty on failure.
    static std::string GenerateCCUUID();
};

}  // namespace xDENcommon
