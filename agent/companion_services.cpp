#include <ace/OS_NS_stdio.h>
#include <ace/Process.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "platform/corba_config_items.h"
#include "platform/environment.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kCommandLineSize = 1024;
constexpr std::size_t kEnvironmentSize = 16384;
constexpr std::size_t kEnvironmentSlots = 512;
constexpr std::size_t kMaxArguments = 128;

void SleepSeconds(time_t seconds) {
    timespec left{seconds, 0};
    while (::nanosleep(&left, &left) == -1 && errno == EINTR) {
    }
}

constexpr std::size_t kSpareArguments = 8;

/// How many arguments one directive of a format may take from the list, alignment included.
std::size_t ArgumentsOf(std::string_view directive) {
    const bool wide = directive.find_first_of("Lq") != std::string_view::npos ||
                      directive.find("ll") != std::string_view::npos;
    return (wide ? 4 : 1) + static_cast<std::size_t>(std::count(directive.begin(), directive.end(), '*'));
}

/// Whether the directives of `format` are content with the spare arguments, which are pointers to empty text:
/// not too many, none that picks an argument by its position, and none that writes to one.
bool SpareArgumentsSuffice(std::string_view format) {
    std::size_t wanted = 0;
    for (std::size_t sign = format.find('%'); sign < format.size(); sign = format.find('%', sign)) {
        const std::size_t end =
            std::min(format.find_first_not_of("0123456789 +-#'.*$hlLqjztI", sign + 1), format.size() - 1);
        const std::string_view directive = format.substr(sign, end - sign + 1);
        sign = end + 1;
        if (directive.find_first_of("$n") != std::string_view::npos) {
            return false;
        }
        wanted += directive == "%%" ? 0 : ArgumentsOf(directive);
    }
    return wanted <= kSpareArguments;
}

CorbaBaseAgentConfig::NameValueList ReadStore() {
    CorbaBaseAgentConfig::NameValueList items;
    NS_BUNDLEMGR1::CorbaConfigItems::Instance()->GetCorbaConfigItems(items);
    return items;
}

}  // namespace

struct CorbaBaseAgentConfig::Companion {
    const char* service;  // key of m_mapServicePid
    const char* starting;
    const char* started;
    time_t grace;  // seconds
};

void (*CorbaBaseAgentConfig::s_pfnGracePeriod)(time_t seconds) = &SleepSeconds;

bool CorbaBaseAgentConfig::AutoStartService() {
    const std::string env = NS_BUNDLEMGR1::GetXDENEnvironment();
    if (env.empty()) {
        ACE_OS::printf("Can not find the Environment variant.");
        return false;
    }
    const std::string bin = env + "/../cbb/nbi/nbicbb_3p/share/bin";
    static constexpr Companion kNaming{"NamingService", "Corba Service[NamingService] auto starting...\n",
                                       "Corba Service[NamingService] has started!\n", 1};
    static constexpr Companion kNotify{"NotifyService", "Corba Service[NotifyService] auto starting...\n",
                                       "Corba Service[NotifyService] has started!\n", 2};
    if (m_NamingServiceAutoStart && !StartCompanion(kNaming, bin, m_NamingServiceCmd)) {
        return false;
    }
    if (m_NotifyServiceAutoStart && !StartCompanion(kNotify, bin, m_NotifyServiceCmd)) {
        return false;
    }
    return true;
}

bool CorbaBaseAgentConfig::StartCompanion(const Companion& companion, const std::string& bin,
                                          const std::string& command) {
    TA_POS;
    TaTrace("%s", companion.starting);
    const std::string format = bin + "/" + command;
    if (!SpareArgumentsSuffice(format)) {
        return false;
    }
    ACE_Process_Options options(true, kCommandLineSize, kEnvironmentSize, kEnvironmentSlots, kMaxArguments);
    options.working_directory(bin.c_str());
// The command is the format itself, so that "%%" in a setting stands for a percent sign. Any other directive
// finds empty text to print; one for a number prints a number without meaning.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    char none[sizeof(long)] = {};
    options.command_line(format.c_str(), none, none, none, none, none, none, none, none);
#pragma GCC diagnostic pop
    const pid_t pid = m_ProcessMgr.spawn(options, nullptr);
    if (pid == -1) {
        return false;
    }
    s_pfnGracePeriod(companion.grace);
    m_mapServicePid[companion.service] = pid;
    TA_POS;
    TaTrace("%s", companion.started);
    return true;
}

void CorbaBaseAgentConfig::AutoExitService() {
    for (const auto& [service, pid] : m_mapServicePid) {
        TA_POS;
        TaTrace("Corba Service[%s] exiting... ", service.c_str());
        m_ProcessMgr.terminate(pid);
        TA_POS;
        TaTrace("Corba Service[%s] has exited! ", service.c_str());
    }
}

void CorbaBaseAgentConfig::DestroyService() {
    AutoExitService();
}

bool CorbaBaseAgentConfig::UpdateNamingServiceParams() {
    const NameValueList items = ReadStore();
    const auto updateText = [&](const char* key, std::string& member) {
        std::string text;
        GetOptionByName(items, key, text);
        if (text != member) {
            member = text;
        }
    };
    const auto updatePort = [&](const char* key, unsigned short& member) {
        int port = 0;
        GetOptionByName(items, key, port);
        if (port != 0) {
            member = static_cast<unsigned short>(port);
        }
    };
    updateText("NamingService_Name", m_NamingServiceName);
    updateText("NamingService_Host", m_NamingServiceHost);
    updateText("NamingService_Option", m_NamingServiceOption);
    updatePort("NamingService_Port", m_NamingServicePort);
    updatePort("NamingService_SSLPort", m_NamingServiceSSLPort);
    return true;
}

bool CorbaBaseAgentConfig::UpdateNotifyServiceParams(const char* /*name*/) {
    if (NS_BUNDLEMGR1::GetCfgDirPath().empty()) {
        ACE_OS::printf("Can not find the Environment variant.\n");
        return false;
    }
    const NameValueList items = ReadStore();
    const auto updatePort = [&](const char* key, unsigned short& member) {
        int port = 0;
        GetOptionByName(items, key, port);
        member = static_cast<unsigned short>(port);
    };
    const auto updateText = [&](const char* key, std::string& member) {
        std::string text;
        GetOptionByName(items, key, text);
        member = text;
    };
    updatePort("NotifyService_Port", m_NotifyServicePort);
    updatePort("NotifyService_SSLPort", m_NotifyServiceSSLPort);
    updateText("NotifyService_Name", m_NotifyServiceName);
    updateText("NotifyService_Host", m_NotifyServiceHost);
    updateText("NotifyService_Option", m_NotifyServiceOption);
    return true;
}

bool CorbaBaseAgentConfig::GetNamingServiceAddr(std::string& host, int& port, bool ssl) {
    host = m_NamingServiceHost;
    port = ssl ? m_NamingServiceSSLPort : m_NamingServicePort;
    return true;
}

bool CorbaBaseAgentConfig::GetNotifyServiceAddr(std::string& host, int& port, bool ssl) {
    host = m_NotifyServiceHost;
    port = ssl ? m_NotifyServiceSSLPort : m_NotifyServicePort;
    return true;
}

bool CorbaBaseAgentConfig::GetNotifyFactory(
    TAO_Objref_Out_T<CosNotifyChannelAdmin::EventChannelFactory> factory) {
    if (CORBA::is_nil(m_ORB.in())) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::GetNotifyFactory] ORB is nil!");
        return false;
    }
    CORBA::Object_var object;
    bool found = false;
    if (m_ntIorFile != nullptr) {
        found = Read_ior(m_ntIorFile, object) == 0;
        if (!found) {
            TA_POS;
            TaTrace("[CorbaBaseAgentConfig::GetNotifyFactory] Read_ior failed!");
        }
    }
    if (!found) {
        CosNaming::Name name(1);
        name.length(1);
        name[0].id = CORBA::string_dup("NotifyEventChannelFactory");
        name[0].kind = CORBA::string_dup("");
        if (!GetRef(name, object)) {
            TA_POS;
            TaTrace("[CorbaBaseAgentConfig::GetNotifyFactory] GetRef failed!");
            return false;
        }
    }
    try {
        factory = CosNotifyChannelAdmin::EventChannelFactory::_narrow(object.in());
        return true;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[CorbaBaseAgentConfig::GetNotifyFactory] Narrow object ref failed!");
        return false;
    }
}

}  // namespace NS_CORBA
