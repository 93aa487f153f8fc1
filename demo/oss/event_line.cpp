#include "demo/oss/event_line.h"

#include <array>
#include <utility>

#include "demo/oss/text.h"

namespace qv_oss {
namespace {

constexpr const char* kPlain = "\033[0m";

constexpr std::array<std::pair<const char*, const char*>, 5> kColours{{{"CRITICAL", "\033[1;31m"},
                                                                       {"MAJOR", "\033[31m"},
                                                                       {"MINOR", "\033[33m"},
                                                                       {"WARNING", "\033[36m"},
                                                                       {"CLEARED", "\033[32m"}}};

std::string Column(const std::string& text, std::size_t width) {
    const std::string shown = text.empty() ? "-" : Printable(text);
    return shown + std::string(shown.size() < width ? width - shown.size() : 0, ' ') + "  ";
}

std::string SeverityColumn(const std::string& severity, bool colours) {
    std::string column = Column(severity, 8);
    for (const auto& [name, colour] : kColours) {
        if (colours && severity == name) {
            return colour + column + kPlain;
        }
    }
    return column;
}

}  // namespace

std::string EventLine(const EventFields& event, bool colours) {
    return Column(event.time, 17) + Column(event.type, 25) + Column(event.id, 12) +
           SeverityColumn(event.severity, colours) + Column(event.object, 8) +
           (event.text.empty() ? "-" : Printable(event.text));
}

}  // namespace qv_oss
