#pragma once

namespace qv_test {

/// While one lives, snprintf_s of this program fails.
class FailingSnprintf {
  public:
    FailingSnprintf();
    ~FailingSnprintf();
    FailingSnprintf(const FailingSnprintf&) = delete;
    FailingSnprintf& operator=(const FailingSnprintf&) = delete;
};

}  // namespace qv_test
