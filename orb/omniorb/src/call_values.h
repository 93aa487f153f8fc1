// The values of one call as Anys, copied out of the ORB's call descriptor with the TypeCodes of the operation
// table.
#pragma once

#include "orb_internals.h"

#include "qv_orb/operation_table.h"

namespace qv_orb {

/// Holds values between the call descriptor and whoever reads them.
class ValueStream : public cdrMemoryStream {
  public:
    ValueStream();

  private:
    static constexpr CORBA::ULong kUsualSize = 1024;
};

void MarshalArguments(omniCallDescriptor& call, cdrStream& stream);
void MarshalReturned(omniCallDescriptor& call, cdrStream& stream);

/// The parameters as they stand ahead of the servant: values for in and inout, an empty Any for out.
Dynamic::ParameterList* ParametersBeforeCall(omniCallDescriptor& call, const OperationEntry& operation);

/// The parameters after a normal return, all with values.
Dynamic::ParameterList* ParametersAfterCall(omniCallDescriptor& call, const OperationEntry& operation);

/// The result after a normal return; of kind tk_void for an operation without one.
CORBA::Any* ResultOfCall(omniCallDescriptor& call, const OperationEntry& operation);

}  // namespace qv_orb
