#pragma once

#include <stdexcept>
#include <string>

namespace qv_demo {

/// Why the agent can't start: what is wrong and what to do about it, fit for the person who started it.
class StartError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Raises StartError when the configuration yields no setting at all or the root of the installation isn't
/// set.
void CheckConfiguration();

/// Raises StartError when no file can be made in the directory of the logs.
void CheckLogDirectory();

/// Raises StartError when no file of users is configured, or it can't be used.
void CheckUsers();

/// Why nothing can listen on "host:port" right now; empty when it is possible. `setting` is where the port
/// comes from.
std::string WhyNotListening(const std::string& address, const std::string& setting);

}  // namespace qv_demo
