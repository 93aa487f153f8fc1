// The one way in which starting a service fails.
#pragma once

#include <stdexcept>
#include <string>

namespace qv_service {

constexpr int kExitFailure = 1;  // something on this machine is in the way
constexpr int kExitUsage = 2;    // the command line can't be carried out as it stands

/// Carries the sentence for the operator and the exit code of the process.
class StartError : public std::runtime_error {
  public:
    explicit StartError(const std::string& sentence, int exit_code = kExitFailure)
        : std::runtime_error(sentence), exit_code_(exit_code) {}

    int ExitCode() const noexcept { return exit_code_; }

  private:
    int exit_code_;
};

}  // namespace qv_service
