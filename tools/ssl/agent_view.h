#pragma once

#include <cstddef>
#include <string>

namespace qv_tools {

/// What the agent itself takes from a service configuration file. It doesn't read the file as the ORB does:
/// it goes line by line, comments too, and a value runs to the end of its line.
struct AgentView {
    std::string pass_phrase;
    std::string private_key_file;
    std::string certificate_file;
    std::string authority_file;
    std::size_t endless_line = 0;  ///< number of the line that the agent never gets past, from 1; 0: none
};

AgentView ViewOfAgent(const std::string& text);

}  // namespace qv_tools
