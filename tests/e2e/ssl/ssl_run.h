#pragma once

#include <string>

#include "tests/e2e/events/event_run.h"
#include "tests/support/certificates/test_authority.h"

namespace qv_e2e {

/// An EventRun whose processes speak SSL, with certificates of one authority for servers and OSSs.
class SslRun : public EventRun {
  public:
    SslRun();

    /// The service configuration file of a client that shows this certificate.
    std::string ProfileOf(const std::string& name, const qv_test::IssuedFiles& files) const;

    const qv_test::TestAuthority& authority() const { return authority_; }
    const std::string& oss_profile() const { return oss_profile_; }
    /// Of the servers' key.
    static constexpr const char* kPassPhrase = "pass-phrase-of-the-servers";

  private:
    const qv_test::TempDir certificates_;
    const qv_test::TestAuthority authority_;
    const std::string oss_profile_;
};

}  // namespace qv_e2e
