// Minor codes that the standard assigns to the failures of chapters 4 and 21 (CORBA 3.0, appendix A).
#pragma once

#include "qv_orb/orb_base.h"

namespace qv_orb {

constexpr CORBA::ULong kOmgMinorBase = 0x4f4d0000;

// BAD_INV_ORDER
constexpr CORBA::ULong kSlotDuringInitialisation = kOmgMinorBase | 10;
constexpr CORBA::ULong kAttributeNotValidHere = kOmgMinorBase | 14;
constexpr CORBA::ULong kReplyContextExists = kOmgMinorBase | 15;
// BAD_PARAM
constexpr CORBA::ULong kNoSuchServiceContext = kOmgMinorBase | 26;
constexpr CORBA::ULong kNilInitialReference = kOmgMinorBase | 27;
constexpr CORBA::ULong kPolicyTypeTwice = kOmgMinorBase | 30;
// NO_RESOURCES
constexpr CORBA::ULong kNotSupportedByBinding = kOmgMinorBase | 1;
// INV_POLICY
constexpr CORBA::ULong kNoPolicyFactory = kOmgMinorBase | 3;
// UNKNOWN
constexpr CORBA::ULong kUnlistedUserException = kOmgMinorBase | 1;

}  // namespace qv_orb
