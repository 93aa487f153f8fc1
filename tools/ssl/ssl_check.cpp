#include "tools/ssl/ssl_check.h"

#include "tools/ssl/profile_check.h"
#include "tools/ssl/revocation_check.h"

namespace qv_tools {

std::string RevocationListDirectory(const std::string& shareDirectory) {
    return shareDirectory + "/etc/ssl/nbi/crl/";
}

void CheckSsl(const SslSetUp& setUp, const CheckTime& time, Findings& findings) {
    LoadedCertificates loaded;
    if (const auto settings = CheckProfile(setUp.profile, setUp.serves, findings)) {
        loaded = CheckCertificates(*settings, time, findings);
    }
    CheckRevocation(RevocationListDirectory(setUp.share_directory), loaded, time, findings);
}

}  // namespace qv_tools
