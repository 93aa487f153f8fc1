#include <ace/OS_NS_string.h>
#include <ace/OS_NS_sys_utsname.h>

#include <cstdlib>
#include <cstring>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "platform/corba_config_items.h"

namespace NS_CORBA {

namespace {

using NameValueList = CorbaBaseAgentConfig::NameValueList;

bool FindValue(const NameValueList& items, const std::string& key, std::string& value) {
    if (NS_BUNDLEMGR1::GetValByKey(value, key, items)) {
        return true;
    }
    TA_POS;
    TaDebugWithPara(2, "[CorbaBaseAgentConfig::GetOptionByName] Get %s failed!", key.c_str());
    return false;
}

/// The value as a decimal number, cut to the width of `Number`: text that is no number gives 0.
template <typename Number>
void ReadNumber(const NameValueList& items, const std::string& key, Number& out) {
    std::string value;
    if (FindValue(items, key, value)) {
        out = static_cast<Number>(std::strtol(value.c_str(), nullptr, 10));
    }
}

}  // namespace

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key, bool& out) {
    std::string value;
    if (FindValue(items, key, value)) {
        out = static_cast<int>(std::strtol(value.c_str(), nullptr, 10)) != 0;
    }
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key, int& out) {
    ReadNumber(items, key, out);
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key,
                                           unsigned int& out) {
    ReadNumber(items, key, out);
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key,
                                           unsigned long& out) {
    std::string value;
    if (FindValue(items, key, value)) {
        out = std::strtoul(value.c_str(), nullptr, 10);
    }
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key,
                                           unsigned short& out) {
    ReadNumber(items, key, out);
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key, char& out) {
    ReadNumber(items, key, out);
}

void CorbaBaseAgentConfig::GetOptionByName(const NameValueList& items, const std::string& key,
                                           std::string& out) {
    std::string value;
    if (FindValue(items, key, value)) {
        out = value;
    }
}

bool CorbaBaseAgentConfig::GetOption() {
    NameValueList items;
    NS_BUNDLEMGR1::CorbaConfigItems::Instance()->GetCorbaConfigItems(items);

    ReadServerOptions(items);
    unsigned int sslMode = 0;
    GetOptionByName(items, "SSLMode", sslMode);
    m_SSLMode = sslMode;
    ReadNameOptions(items);
    AdjustCorbaAgentOption(sslMode);
    ReadBehaviourOptions(items);

    ReplaceLocalHosts();
    GetNamingServiceCmd();
    GetNotifyServiceCmd();
    GetCorbaAgentCmd();
    GetNBISSLCertificateInfo();
    return true;
}

void CorbaBaseAgentConfig::ReadServerOptions(const NameValueList& items) {
    GetOptionByName(items, "ORBThreadPoolEnable", m_ORBThreadPool);
    GetOptionByName(items, "ORBThreadNum", m_ORBThrdNum);
    GetOptionByName(items, "TimerInterval", m_TimeInterval);
    GetOptionByName(items, "IteratorMaxNum", m_IteratorNum);
    GetOptionByName(items, "IteratorRestriction", m_IteratorRestriction);
    GetOptionByName(items, "TimeOut", m_TimeOut);
    GetOptionByName(items, "EventQueueLength", m_EventQueueLength);
    GetOptionByName(items, "NamingService_Port", m_NamingServicePort);
    GetOptionByName(items, "NamingService_SSLPort", m_NamingServiceSSLPort);
    GetOptionByName(items, "NotifyService_Port", m_NotifyServicePort);
    GetOptionByName(items, "NotifyService_SSLPort", m_NotifyServiceSSLPort);
    GetOptionByName(items, "CORBAAgent_Port", m_CorbaAgentPort);
    GetOptionByName(items, "CORBAAgent_SSLPort", m_CorbaAgentSSLPort);
    GetOptionByName(items, "NamingService_AutoStart", m_NamingServiceAutoStart);
    GetOptionByName(items, "NotifyService_AutoStart", m_NotifyServiceAutoStart);
}

void CorbaBaseAgentConfig::ReadNameOptions(const NameValueList& items) {
    GetOptionByName(items, "IDLVersion", m_IDLVersion);
    GetOptionByName(items, "EmsLocation", m_EmsLocation);
    GetOptionByName(items, "EmsName", m_EmsName);
    GetOptionByName(items, "EmsType", m_EmsType);
    GetOptionByName(items, "NamingService_Name", m_NamingServiceName);
    GetOptionByName(items, "NamingService_Host", m_NamingServiceHost);
    GetOptionByName(items, "NamingService_Option", m_NamingServiceOption);
    GetOptionByName(items, "NotifyService_Name", m_NotifyServiceName);
    GetOptionByName(items, "NotifyService_Host", m_NotifyServiceHost);
    GetOptionByName(items, "NotifyService_Option", m_NotifyServiceOption);
    GetOptionByName(items, "CORBAAgent_Host", m_CorbaAgentHost);
    GetOptionByName(items, "CORBAAgent_Option", m_CorbaAgentOption);
}

void CorbaBaseAgentConfig::ReadBehaviourOptions(const NameValueList& items) {
    GetOptionByName(items, "bUseIPAndPort", m_UseIPAndPort);
    GetOptionByName(items, "PersistenceEventChannel", m_PersistentEventChannel);
    GetOptionByName(items, "AlarmTimeout", m_AlarmTimeout);
    GetOptionByName(items, "HeartBeatTimeout", m_HeartBeatTimeout);
    GetOptionByName(items, "OtherEventTimeout", m_OtherEventTimeout);
    GetOptionByName(items, "SSL_Profile", m_SSLProfile);
    GetOptionByName(items, "NON_Profile", m_NonSSLProfile);
    GetOptionByName(items, "IsInterceptorEnabled", m_vecFlags[kFlagInterceptor]);
    GetOptionByName(items, "ShakeHandWithOSS", m_EmsPingMode);
    GetOptionByName(items, "StrategyOfReleasingSession", m_SessionReleaseStrategy);
    GetOptionByName(items, "MaxSessionOfFIFO", m_MaxSession);
    GetOptionByName(items, "MaxIntervalOfSilentTime", m_SilentTime);
    GetOptionByName(items, "TimeZoneRefPoint", m_vecFlags[kFlagTimeZone]);
    GetOptionByName(items, "TimeShowAppearance", m_vecFlags[kFlagTimeShow]);
    GetOptionByName(items, "bAlarmWithAffectObjName", m_vecFlags[kFlagAffectObjName]);
    GetOptionByName(items, "bSingleThreadPushEvent", m_SingleThreadPushEvent);
}

void CorbaBaseAgentConfig::ReplaceLocalHosts() {
    GetHostName();
    for (std::string* host : {&m_NamingServiceHost, &m_NotifyServiceHost, &m_CorbaAgentHost}) {
        if (IsLocalHost(host->c_str())) {
            *host = m_HostName;
        }
    }
}

bool CorbaBaseAgentConfig::IsLocalHost(const char* host) {
    return std::strcmp(host, "localhost") == 0 || std::strcmp(host, "127.0.0.1") == 0;
}

void CorbaBaseAgentConfig::GetHostName() {
    constexpr std::size_t kLimit = 255;  // end mark included
    ACE_utsname node;
    if (ACE_OS::uname(&node) == -1) {
        return;
    }
    char name[kLimit + 1] = {};
    ACE_OS::strsncpy(name, node.nodename, kLimit);
    m_HostName = name;
}

std::string CorbaBaseAgentConfig::GetHostNameAndReturn() {
    return m_HostName;
}

}  // namespace NS_CORBA
