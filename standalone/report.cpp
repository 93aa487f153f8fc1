#include "standalone/report.h"

#include <unistd.h>

#include <cerrno>

#include "standalone/record_text.h"

namespace qv_standalone {

void Report(const std::string& sentence) noexcept {
    try {
        // One write, so that sentences of several threads don't run into each other.
        const std::string line = "qv-platform: " + OneLine(sentence) + "\n";
        while (write(STDERR_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
        }
    } catch (...) {
        // No memory for the sentence: there is nobody left to tell.
    }
}

}  // namespace qv_standalone
