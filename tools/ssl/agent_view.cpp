#include "tools/ssl/agent_view.h"

#include <sstream>

namespace qv_tools {
namespace {

constexpr std::size_t kLongestLine = 511;

std::string Behind(const std::string& line, const std::string& marker) {
    const std::size_t at = line.find(marker);
    return at == std::string::npos ? "" : line.substr(at + marker.size());
}

void Take(const std::string& line, AgentView& view) {
    const auto holds = [&line](const char* option) { return line.find(option) != std::string::npos; };
    if (holds("-SSLPrivateKeyPasswd")) {
        view.pass_phrase = Behind(line, "-SSLPrivateKeyPasswd ");
    } else if (holds("-SSLPrivateKey")) {
        view.private_key_file = Behind(line, "PEM:");
    } else if (holds("-SSLCertificate")) {
        view.certificate_file = Behind(line, "PEM:");
    } else if (holds("-SSLCAfile")) {
        view.authority_file = Behind(line, "PEM:");
    }
}

}  // namespace

AgentView ViewOfAgent(const std::string& text) {
    AgentView view;
    std::istringstream lines(text);
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        if (line.size() > kLongestLine) {
            view.endless_line = number;
            break;
        }
        Take(line, view);
    }
    return view;
}

}  // namespace qv_tools
