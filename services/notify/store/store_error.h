#pragma once

#include <stdexcept>

namespace qv_notify {

/// Something could not be kept or read back. The text is a sentence for the operator: what failed, why, and
/// what to do about it.
class StoreError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace qv_notify
