#include "tests/e2e/notify_accounting/service_words.h"

#include <sstream>

namespace qv_accounting {

ServiceWords::ServiceWords(const std::string& said, int proxy) {
    std::istringstream lines(said);
    std::string line;
    while (std::getline(lines, line)) {
        Take(line, "/ca0/p" + std::to_string(proxy) + " ");
    }
}

void ServiceWords::Take(const std::string& line, const std::string& proxy) {
    if (line.find(proxy + "may get event ") != std::string::npos) {
        ++in_doubt;
    } else if (line.find(proxy + "may get one event twice") != std::string::npos) {
        ++in_doubt_after_start;
    } else if (line.find(proxy + "was dropped") != std::string::npos) {
        const std::size_t end = line.find(" were dropped so far");
        dropped = std::stoul(line.substr(line.rfind(' ', end - 1) + 1));
    }
}

std::size_t CountOf(const std::string& text, const std::string& words) {
    std::size_t count = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace qv_accounting
