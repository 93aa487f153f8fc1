#include "logging/logmgr.h"
#include "logging/secret_parameters.h"

namespace NS_CORBA {

namespace {

constexpr CORBA::ULong kMaskLength = sizeof kSecretMask - 1;
constexpr char kAnswersOpenly[] = "ping";
constexpr char kLogOutSession[] = "logOutSession";
const std::string kPasswordPair = "name USERPWD value";

using SecretTable = std::map<std::string, std::vector<int>>;

const std::vector<int>& SecretsIn(const SecretTable& table, const std::string& operation) {
    static const std::vector<int> none;
    const auto secrets = table.find(operation);
    return operation == kAnswersOpenly || secrets == table.end() ? none : secrets->second;
}

void RequireParameter(int position, std::size_t parameters) {
    if (static_cast<std::size_t>(position) >= parameters) {
        throw CORBA::BAD_PARAM();
    }
}

}  // namespace

const std::vector<int>& CorbaLogMgr::SecretsOf(const std::string& operation, std::size_t parameters) const {
    const std::vector<int>& secrets = SecretsIn(m_IfNameToParamPos, operation);
    for (const int position : secrets) {
        RequireParameter(position, parameters);
    }
    return secrets;
}

// What can be masked is masked, whatever else is missing.
void CorbaLogMgr::SecurityHandle(Dynamic::ParameterList_var& params, const std::string& operation) {
    for (const int position : SecretsIn(m_IfNameToParamPos, operation)) {
        RequireParameter(position, params->length());
        params[static_cast<CORBA::ULong>(position)].argument <<=
            CORBA::Any::from_string(kSecretMask, kMaskLength);
    }
}

void CorbaLogMgr::LogOutSessionParamterAnonyms(std::string& out, const std::string& in,
                                               const std::string& operation) {
    if (operation != kLogOutSession) {
        out = in;
        return;
    }
    std::string rest = in;
    for (;;) {
        const std::size_t key = rest.find(kPasswordPair);
        if (key == std::string::npos) {
            break;
        }
        const std::size_t behindKey = key + kPasswordPair.size();
        out += rest.substr(0, behindKey);
        const std::size_t brace = rest.find('}', key);
        if (brace == std::string::npos) {
            break;  // the whole rest follows, with the key for the second time: kept so
        }
        const std::string value = rest.substr(behindKey, brace - behindKey);
        out += value.empty() || value == " " ? " " : " ******";
        rest.erase(0, brace);
    }
    out += rest;
}

/// @return whether the operation's texts are masked
bool CorbaLogMgr::MaskPrintedSecrets(const std::string& operation, std::string& text, std::size_t begin) {
    if (operation != kLogOutSession) {  // spares every other record a copy of its text
        return false;
    }
    std::string masked;
    LogOutSessionParamterAnonyms(masked, text.substr(begin), operation);
    text.replace(begin, std::string::npos, masked);
    return true;
}

}  // namespace NS_CORBA
