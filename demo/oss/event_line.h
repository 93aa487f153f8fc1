#pragma once

#include <string>

namespace qv_oss {

/// What an OSS shows of an event. What the event lacks is empty.
struct EventFields {
    std::string time;
    std::string type;
    std::string id;
    std::string severity;  ///< as the interface names it, without "PS_"
    std::string object;
    std::string text;
};

/// One line of aligned columns without its end, for the terminal or a script: time, type, id, severity,
/// object, text, with "-" for what is missing. Control characters don't get through.
/// @param colours whether the severity is coloured
std::string EventLine(const EventFields& event, bool colours);

}  // namespace qv_oss
