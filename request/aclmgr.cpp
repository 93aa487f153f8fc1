#include "request/aclmgr.h"

#include <ace/Guard_T.h>
#include <ace/INET_Addr.h>
#include <netinet/in.h>

#include <fstream>
#include <vector>

#include "logging/service_lookup.h"
#include "platform/corba_config_items.h"
#include "platform/log_service.h"

namespace NS_UTIL {

namespace {

using ReadGuard = ACE_Read_Guard<ACE_RW_Mutex>;
using WriteGuard = ACE_Write_Guard<ACE_RW_Mutex>;

constexpr char kSourceFile[] = "aclmgr";
constexpr int kUnwritableLine = 124;
constexpr char kHeaderLine[] = "# this is a get_distribute acl config file.";
constexpr std::int64_t kUsecPerSecond = 1000000;

int SystemTimeOfDay(timeval* now) {
    return gettimeofday(now, nullptr);
}

ACE_Time_Value Now(int (*clock)(timeval*)) {
    timeval now{};
    return clock(&now) == 0 ? ACE_Time_Value(now) : ACE_Time_Value(-1, 0);
}

/// True when `address` can be seen as an IPv4 address, be it mapped into IPv6 or in the older form
/// "::a.b.c.d". Asked first, as get_ip_address complains on the standard error about those that can't.
bool IsIPv4(const ACE_INET_Addr& address) {
    const auto* const socketAddress = static_cast<const sockaddr*>(address.get_addr());
    if (socketAddress->sa_family != AF_INET6) {
        return true;
    }
    const auto* const ipv6 = reinterpret_cast<const sockaddr_in6*>(socketAddress);
    return IN6_IS_ADDR_V4MAPPED(&ipv6->sin6_addr) || IN6_IS_ADDR_V4COMPAT(&ipv6->sin6_addr);
}

/// The IPv4 address of a text or host name, 0 when there is none.
unsigned int AddressOf(const std::string& value) {
    ACE_INET_Addr address;
    if (address.set(static_cast<u_short>(0), value.c_str(), 0) != 0) {
        return 0;
    }
    // A host with addresses of both kinds may show one of the other kind first.
    while (!IsIPv4(address)) {
        if (!address.next()) {
            return 0;
        }
    }
    return address.get_ip_address();
}

NS_LOG_SERVICE1::LogHandle* OpenLog() {
    try {
        NS_CORBA::ServiceLookup<NS_LOG_SERVICE1::LogSvcInterface> lookup("LogSvcInterface");
        return lookup.Get().OpenLog("unbi", "unbi", "debug");
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

int (*IPAcl::s_pfnGetTimeOfDay)(timeval*) = &SystemTimeOfDay;
std::atomic<NS_LOG_SERVICE1::LogHandle*> IPAcl::s_pLog{nullptr};

IPAcl::IPAcl() : m_lastRefresh(ACE_Time_Value::zero), m_loopback(AddressOf("127.0.0.1")) {}

IPAcl::~IPAcl() = default;

void IPAcl::Init(const std::string& fileName, long period, IPACLType type) {
    m_fileName = fileName;
    m_period = period;
    m_type = type;
    const WriteGuard guard(m_tableLock);
    m_mapAllowed.clear();
}

bool IPAcl::IsDue(const ACE_Time_Value& lastRefresh) const {
    const ACE_Time_Value elapsed = Now(s_pfnGetTimeOfDay) - lastRefresh;
    return m_period < elapsed.sec();
}

void IPAcl::UpdateOssIp() {
    const std::int64_t usec = m_lastRefreshUsec.load(std::memory_order_relaxed);
    if (!IsDue(ACE_Time_Value(usec / kUsecPerSecond, usec % kUsecPerSecond))) {
        return;
    }
    const WriteGuard guard(m_tableLock);
    if (!IsDue(m_lastRefresh)) {  // another thread has done it meanwhile
        return;
    }
    std::vector<NS_BUNDLEMGR1::NameValueStru> configured;
    NS_BUNDLEMGR1::CorbaConfigItems::Instance()->GetIPAddressList(configured);
    m_mapAllowed.clear();
    for (const NS_BUNDLEMGR1::NameValueStru& entry : configured) {
        m_mapAllowed[AddressOf(entry.value)] = true;
    }
    m_lastRefresh = Now(s_pfnGetTimeOfDay);
    m_lastRefreshUsec.store(m_lastRefresh.sec() * kUsecPerSecond + m_lastRefresh.usec(),
                            std::memory_order_relaxed);
}

bool IPAcl::IsValidIP(unsigned int ip) {
    if (m_type == IPACL_OSS) {
        UpdateOssIp();
    }
    const ReadGuard guard(m_tableLock);
    return m_mapAllowed.empty() || ip == m_loopback || m_mapAllowed.count(ip) != 0;
}

bool IPAcl::RefreshNodeIpAclList(const std::list<std::string>& lines,
                                 const std::list<unsigned int>& addresses,
                                 std::map<unsigned int, bool>& table) {
    const WriteGuard guard(m_fileLock);
    for (const unsigned int address : addresses) {
        table[address] = true;
    }
    std::ofstream file(m_fileName);
    if (!file) {
        ReportUnwritable();
        return false;
    }
    file << kHeaderLine << std::endl;
    for (const std::string& line : lines) {
        file << line << std::endl;
    }
    file.close();
    return true;
}

void IPAcl::ReportUnwritable() const {
    if (!s_pLog.load()) {
        s_pLog = OpenLog();
    }
    if (NS_LOG_SERVICE1::LogHandle* const log = s_pLog.load()) {
        log->WriteFormat(kSourceFile, "unknown", kUnwritableLine, 1,
                         "[IPAcl::RefreshNodeIpAclList] Fail read file: %s", m_fileName.c_str());
    }
}

}  // namespace NS_UTIL
