// Guards the process against servants that return a null string, which the mapping forbids and the ORB would
// follow.
#pragma once

class cdrStream;
class omniCallDescriptor;

namespace CORBA {
class UserException;
}

namespace qv_orb {

/// Raises BAD_PARAM, completed, when the values that the call returns hold a null string; otherwise it
/// changes nothing. `codesets` is the stream that the reply goes to, null for a collocated call.
void RefuseNullStrings(omniCallDescriptor& call, cdrStream* codesets);
void RefuseNullStrings(const CORBA::UserException& exception, cdrStream* codesets);

}  // namespace qv_orb
