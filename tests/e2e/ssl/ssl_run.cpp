#include "tests/e2e/ssl/ssl_run.h"

namespace qv_e2e {

SslRun::SslRun()
    : EventRun(true),
      authority_(certificates_, "authority"),
      oss_profile_(ProfileOf("oss.conf", authority_.Issue("oss", "pass-phrase-of-the-oss"))) {
    UseSsl(ProfileOf("servers.conf", authority_.Issue("servers", kPassPhrase)), oss_profile_);
}

std::string SslRun::ProfileOf(const std::string& name, const qv_test::IssuedFiles& files) const {
    qv_tools::ProfileOptions options = qv_test::OptionsFor(files);
    options.authorities = authority_.File();
    return qv_test::WriteProfile(certificates_, name, options);
}

}  // namespace qv_e2e
