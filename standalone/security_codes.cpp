#include "standalone/security_codes.h"

#include <cstdio>

namespace qv_standalone {

std::string LoginReason(unsigned long code) {
    switch (code) {
        case kLoginAccepted:
            return "the login is accepted";
        case kLoginRejected:
            return "the user or the password is wrong";
        case kLoginLocked:
            return "too many failed logins: the user is locked for a while";
        case kLoginNoUsers:
            return "there is no usable file of users: set users_file, and make one with qv_user";
        case kLoginBusy:
            return "too many logins are being checked at this moment: try again later";
        default:
            break;
    }
    char text[64];
    std::snprintf(text, sizeof text, "the security service refused with the code 0x%08lx", code);
    return text;
}

}  // namespace qv_standalone
