#pragma once

#include <string>

namespace qv_demo {

/// Writes one line to standard output at once. Lines of several threads don't mix.
void Say(const std::string& line);

/// Has what the ORB reports to an operator, such as a client that it turned away, written to standard error
/// and to the debug log. Not thread-safe: call it before the ORB is made.
void TellOfTheOrb();

}  // namespace qv_demo
