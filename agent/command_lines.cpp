#include <ace/Arg_Shifter.h>
#include <ace/OS_NS_stdlib.h>
#include <ace/OS_NS_unistd.h>

#include <array>

#include "agent/argument_list.h"
#include "agent/corbabaseagentconfig.h"
#include "agent/owned_text.h"
#include "logging/corbalogutil.h"
#include "platform/corba_config_items.h"
#include "platform/secure_string.h"
#include "platform/thread_context.h"

namespace NS_CORBA {

namespace {

// The settings know 0 and 1. For any other value some pieces follow "not 0" and others "exactly 1".
constexpr unsigned int kPlain = 0;
constexpr unsigned int kSsl = 1;

constexpr std::size_t kCommandSize = 1024;  // what the ORB gets to see of its arguments, end mark included

std::string Address(const std::string& host, unsigned short port) {
    return host + ":" + std::to_string(port);
}

/// Consumes the option at the shifter's position when it is `option`, and its value; false when it isn't or
/// has no value. The value becomes the content of `target`.
bool TakeOption(ACE_Arg_Shifter& arguments, const char* option, char*& target) {
    const char* value = arguments.get_the_parameter(option);
    if (value == nullptr) {
        return false;
    }
    target = NewText(value);
    arguments.consume_arg();
    return true;
}

}  // namespace

void CorbaBaseAgentConfig::AdjustCorbaAgentOption(unsigned int sslMode) {
    if (m_CorbaAgentOption.find("-ORBCollocation ") == std::string::npos) {
        m_CorbaAgentOption += " -ORBCollocation no ";
    }
    NS_BUNDLEMGR1::CorbaConfigItems* store = NS_BUNDLEMGR1::CorbaConfigItems::Instance();
    std::string hostIp;
    store->GetHostIP(hostIp);
    if (m_CorbaAgentOption.find("-ORBPreferredInterfaces *") == std::string::npos && !store->GetLvsMode() &&
        sslMode == kPlain) {
        m_CorbaAgentOption += " -ORBPreferredInterfaces *=" + hostIp;
    }
}

void CorbaBaseAgentConfig::GetNamingServiceCmd() {
    m_NamingServiceCmd += m_NamingServiceName;
    m_NamingServiceCmd += " -ORBEndpoint iiop://";
    m_NamingServiceCmd += Address(m_NamingServiceHost, m_NamingServicePort);
    if (m_SSLMode != kPlain) {
        m_NamingServiceCmd += "/ssl_port=" + std::to_string(m_NamingServiceSSLPort);
        m_NamingServiceCmd += " -ORBSvcConf " + m_SSLProfile;
    }
    m_NamingServiceCmd += " " + m_NamingServiceOption;
    TA_POS;
    TaDebugWithPara(3, "[CorbaBaseAgentConfig::GetNamingServiceCmd] NamingServiceCmd is %s",
                    m_NamingServiceCmd.c_str());
}

void CorbaBaseAgentConfig::GetNotifyServiceCmd() {
    const bool ssl = m_SSLMode == kSsl;
    m_NotifyServiceCmd += m_NotifyServiceName + " " + m_NotifyServiceOption + " ";
    m_NotifyServiceCmd +=
        ssl ? "-ORBInitRef NameService=corbaloc:ssliop:" : "-ORBInitRef NameService=corbaloc:iiop:";
    m_NotifyServiceCmd += Address(m_NamingServiceHost, ssl ? m_NamingServiceSSLPort : m_NamingServicePort);
    m_NotifyServiceCmd += "/NameService -ORBEndpoint iiop://";
    m_NotifyServiceCmd += Address(m_NotifyServiceHost, m_NotifyServicePort);
    if (m_SSLMode != kPlain) {
        m_NotifyServiceCmd += "/ssl_port=" + std::to_string(m_NotifyServiceSSLPort);
        m_NotifyServiceCmd += " -ORBSvcConf " + m_SSLProfile;
    }
    TA_POS;
    TaDebugWithPara(3, "[CorbaBaseAgentConfig::GetNotifyServiceCmd] NotifyServiceCmd is %s",
                    m_NotifyServiceCmd.c_str());
}

void CorbaBaseAgentConfig::GetCorbaAgentCmd() {
    const bool ssl = m_SSLMode == kSsl;
    const std::string orbId = " -ORBId ORB-" + NS_UTIL::ThreadContextInfo::GenerateUUID();
    const std::string naming = ssl ? ":ssliop:" + Address(m_NamingServiceHost, m_NamingServiceSSLPort)
                                   : ":iiop:" + Address(m_NamingServiceHost, m_NamingServicePort);
    std::string endpoint = Address(m_CorbaAgentHost, m_CorbaAgentPort);
    if (ssl) {
        endpoint += "/ssl_port=" + std::to_string(m_CorbaAgentSSLPort);
    }
    const std::string profile = "-ORBSvcConf " + (ssl ? m_SSLProfile : m_NonSSLProfile);

    m_CorbaAgentCmd += orbId + " ";
    m_CorbaAgentCmd += "-ORBInitRef NameService=corbaloc" + naming + "/NameService" + " ";
    m_CorbaAgentCmd += "-ORBEndpoint iiop://" + endpoint + " ";
    m_CorbaAgentCmd += profile + " " + m_CorbaAgentOption;
    TA_POS;
    TaDebugWithPara(3, "[CorbaBaseAgentConfig::GetCorbaAgentCmd] CorbaAgentCmd is %s",
                    m_CorbaAgentCmd.c_str());
}

bool CorbaBaseAgentConfig::CorbaBaseAgentReConfig() {
    if (!GetOption()) {
        return false;
    }
    std::array<char, kCommandSize> command{};
    TA_POS;
    TaDebugWithPara(2, "[CorbaBaseAgentConfig::CorbaBaseAgentReConfig] CorbaAgentCmd is %s",
                    m_CorbaAgentCmd.c_str());
    strncpy_s(command.data(), command.size(), m_CorbaAgentCmd.c_str(), command.size() - 1);
    m_argc = 0;
    FreeArgumentList(m_argv);
    if (ACE_OS::string_to_argv(command.data(), m_argc, m_argv, true) == -1) {
        TA_POS;
        TaDebugWithPara(2, "[CorbaBaseAgentConfig::CorbaBaseAgentReConfig] string_to_argv failed!");
        return false;
    }
    int kept = m_argc;
    parse_args(kept, m_argv);
    m_argc = kept;
    return true;
}

void FreeArgumentList(char**& arguments) {
    if (arguments == nullptr) {
        return;
    }
    for (char** argument = arguments; *argument != nullptr; ++argument) {
        ACE_OS::free(*argument);
    }
    delete[] arguments;
    arguments = nullptr;
}

void CorbaBaseAgentConfig::parse_args(int& argc, char** argv) {
    ACE_Arg_Shifter arguments(argc, argv);
    while (arguments.is_anything_left()) {
        const int left = arguments.is_anything_left();
        const bool taken = TakeOption(arguments, "-ns", m_nsIorFile) ||
                           TakeOption(arguments, "-nt", m_ntIorFile) ||
                           TakeOption(arguments, "-out", ior_output_file_);
        // The shifter has moved on already when it met one of the options without a value.
        if (!taken && arguments.is_anything_left() == left) {
            arguments.ignore_arg();
        }
    }
}

std::string CorbaBaseAgentConfig::GetRightSubStr(const std::string& key, const std::string& text) {
    const std::size_t found = text.find(key);
    return found == std::string::npos ? std::string() : text.substr(found + key.size());
}

}  // namespace NS_CORBA
