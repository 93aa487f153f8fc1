#pragma once

#include <string>

#include "platform/export.h"

/// What the stand-alone security service answers to a login and to its check. Programs that must also run on
/// an EMS host treat every code but 0 as a refusal.
namespace qv_standalone {

inline constexpr unsigned long kLoginAccepted = 0;
/// There is no such user, or the password is wrong; which of the two is told to nobody.
inline constexpr unsigned long kLoginRejected = 0x41190001;
/// Too many failures in a row: the user is locked for a while, whatever the password.
inline constexpr unsigned long kLoginLocked = 0x41190002;
/// No file of users is configured, or none could be read so far.
inline constexpr unsigned long kLoginNoUsers = 0x41190003;
/// Too many logins are being checked at this moment, or there is no memory for a check: try again later.
inline constexpr unsigned long kLoginBusy = 0x41190004;

/// The reason behind a code as a sentence for an operator, also for codes that are not listed here.
/// Reentrant.
QV_API std::string LoginReason(unsigned long code);

}  // namespace qv_standalone
