// What a service says to its operator.
#pragma once

#include <string>

namespace qv_service {

/// Writes "PROGRAM: SENTENCE" to standard error, in one piece, so that lines of several processes on one
/// terminal stay whole. Any thread may call.
void WriteOperatorLine(const std::string& program, const std::string& sentence);

}  // namespace qv_service
