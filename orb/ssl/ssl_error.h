// The one way in which setting up SSL fails.
#pragma once

#include <stdexcept>
#include <string>

namespace qv_ssl {

/// Carries one sentence for the operator: which file or option, and what is wrong with it. Never a pass
/// phrase.
class SslError : public std::runtime_error {
  public:
    explicit SslError(const std::string& sentence) : std::runtime_error(sentence) {}
};

}  // namespace qv_ssl
