#include "services/common/tao_arguments.h"

#include <strings.h>

#include <charconv>
#include <utility>

#include "services/common/start_error.h"

namespace qv_service {

bool SameOption(const std::string& given, const char* name) {
    return given.size() > 2 ? strcasecmp(given.c_str(), name) == 0 : given == name;
}

TaoArguments::TaoArguments(const std::vector<std::string>& list, std::string hint)
    : m_list(list), m_hint(std::move(hint)) {}

bool TaoArguments::ValueFollows() const {
    return More() && (m_list[m_next].empty() || m_list[m_next][0] != '-');
}

const std::string& TaoArguments::ValueOf(const std::string& option) {
    if (!More() || m_list[m_next].empty()) {
        Refuse("The option \"" + option + "\" needs a value.");
    }
    return Next();
}

void TaoArguments::Refuse(const std::string& sentence) const {
    throw StartError(sentence + " " + m_hint, kExitUsage);
}

void TaoArguments::PassOver(const std::string& option, const UnusedOption* unused,
                            std::vector<std::string>& ignored) {
    if (unused == nullptr) {
        Refuse("The option \"" + option + "\" is unknown.");
    }
    if (unused->takes_value) {
        ValueOf(option);
    }
    const std::string sentence = "The option \"" + option + "\" is not used: " + unused->reason + ".";
    if (std::find(ignored.begin(), ignored.end(), sentence) == ignored.end()) {
        ignored.push_back(sentence);
    }
}

std::optional<TaoEndpoint> SplitEndpoint(const std::string& endpoint) {
    static const std::string kScheme = "iiop://";
    if (strncasecmp(endpoint.c_str(), kScheme.c_str(), kScheme.size()) != 0) {
        return std::nullopt;
    }
    TaoEndpoint parts;
    std::string address = endpoint.substr(kScheme.size());
    if (const std::size_t slash = address.find('/'); slash != std::string::npos) {
        for (std::size_t begin = slash + 1; begin < address.size();) {
            const std::size_t end = std::min(address.find('&', begin), address.size());
            parts.options.push_back(address.substr(begin, end - begin));
            begin = end + 1;
        }
        address.resize(slash);
    }
    if (const std::size_t more = address.find_first_of(",;"); more != std::string::npos) {
        parts.several = true;
        address.resize(more);
    }
    if (const std::size_t version = address.find('@'); version != std::string::npos) {
        address.erase(0, version + 1);
    }
    const std::size_t colon = address.rfind(':');
    if (colon == std::string::npos || address.find(']', colon) != std::string::npos) {
        parts.host = address;
        return parts;
    }
    parts.host = address.substr(0, colon);
    parts.port = address.substr(colon + 1);
    return parts;
}

std::optional<std::string> EndpointValue(const std::string& option, const std::string& name) {
    if (option == name) {
        return "";
    }
    if (option.compare(0, name.size() + 1, name + "=") == 0) {
        return option.substr(name.size() + 1);
    }
    return std::nullopt;
}

std::optional<std::uint16_t> ReadPort(const std::string& digits) {
    std::uint16_t port = 0;
    const char* const last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, port);
    return error == std::errc() && end == last ? std::optional<std::uint16_t>(port) : std::nullopt;
}

}  // namespace qv_service
