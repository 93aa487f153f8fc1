// The values of a request as the ORB marshals them, all at once: for records of requests, which are made for
// each of them, an Any per parameter is too slow.
#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <cstddef>
#include <memory>

#include "orb/export.h"

namespace qv_orb {

/// Bytes that stand elsewhere, where the servant has them, since there are too many to be copied: those of
/// one text or of one sequence or array of one-byte elements, without anything to be aligned among them. In
/// the CDR around them only the first `size % kCdrPhase` of them stand, at `place`, so that the alignment of
/// what follows is the same.
struct CdrDetour {
    std::size_t place = 0;       ///< offset in the CDR around them
    const char* data = nullptr;  ///< the bytes, which stay the servant's for as long as its call lasts
    std::size_t size = 0;        ///< bytes
};
/// The largest alignment that CDR has. A detour may begin at any place, and its size need not be a multiple.
constexpr std::size_t kCdrPhase = 8;

/// Bytes in CDR, in this machine's byte order and counted from an address that is divisible by 8.
struct CdrBytes {
    const char* data = nullptr;          ///< not owned
    std::size_t size = 0;                ///< bytes
    const CdrDetour* detours = nullptr;  ///< in the order of their places
    std::size_t detour_count = 0;        ///< how many there are at `detours`
};

/// The parameters and the result of one request, as ServerRequestInfo::arguments and result give them.
/// Belongs to the interception point at which it was made, and to its thread.
class QV_ORB_API RequestValues {
  public:
    /// Null where the ORB offers no more than the Anys: then ask `info` itself. Raises what arguments()
    /// raises.
    static std::unique_ptr<RequestValues> Of(PortableInterceptor::ServerRequestInfo_ptr info);

    virtual ~RequestValues() = default;

    virtual std::size_t parameters() const = 0;                          ///< how many the operation has
    virtual CORBA::ParameterMode mode(std::size_t parameter) const = 0;  ///< of the parameter, from 0 on
    /// The types stay the ORB's.
    /// @{
    virtual CORBA::TypeCode_ptr type(std::size_t parameter) const = 0;
    virtual CORBA::TypeCode_ptr result_type() const = 0;
    /// @}

    /// Whether the servant has returned, so that there are values of both kinds.
    virtual bool returned() const = 0;
    /// The values of the in and inout parameters as the servant got them, one behind the other.
    virtual CdrBytes sent() = 0;
    /// The result, if there is one, then the values of the inout and out parameters.
    virtual CdrBytes given_back() = 0;

    /// A place for one thing that the user of these values keeps until the request has ended; null at first,
    /// the same at all interception points of the request.
    virtual std::shared_ptr<void>& attachment() = 0;
};

}  // namespace qv_orb
