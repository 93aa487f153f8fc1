#pragma once

#include <sys/types.h>

#include <set>

namespace qv_e2e {

/// The TCP ports at which a process takes connections now.
std::set<int> ListeningPorts(pid_t process);

}  // namespace qv_e2e
