#include "services/common/operator_line.h"

#include <unistd.h>

namespace qv_service {

void WriteOperatorLine(const std::string& program, const std::string& sentence) {
    const std::string line = program + ": " + sentence + "\n";
    // Nobody can be told of a failure here.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace qv_service
