// What the seam has to say to an operator.
#pragma once

#include <string>

namespace qv_orb {

void Report(const std::string& line);
/// Says a line once in the life of the process.
void ReportOnce(const std::string& line);

}  // namespace qv_orb
