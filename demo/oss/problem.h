#pragma once

#include <stdexcept>
#include <string>

namespace qv_oss {

/// How the program ends; scripts tell the cases apart by it.
enum ExitCode {
    kOk = 0,
    kUnexpected = 1,  ///< none of the others
    kUsage = 2,       ///< the command line or a file that it names
    kNamingUnreachable = 3,
    kNotBound = 4,        ///< the naming service knows no EMS, or not that one
    kEmsUnreachable = 5,  ///< it is bound but doesn't answer
    kWrongPassword = 6,
    kSessionLimit = 7,
    kNoPermission = 8,
    kTimeout = 9,
    kSessionEnded = 10,  ///< the EMS has ended the session
    kNotFound = 11,      ///< no such element
    kNoEvents = 12       ///< no event channel, or its notification service doesn't answer
};

/// What went wrong, in a sentence for the person at the terminal.
class Problem : public std::runtime_error {
  public:
    Problem(ExitCode code, const std::string& sentence) : std::runtime_error(sentence), code_(code) {}
    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

/// Writes the sentence to standard error.
void Complain(const std::string& sentence);

}  // namespace qv_oss
