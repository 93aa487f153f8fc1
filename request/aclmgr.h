#pragma once

#include <ace/RW_Mutex.h>
#include <ace/Time_Value.h>
#include <sys/time.h>

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "platform/export.h"

namespace NS_LOG_SERVICE1 {
class LogHandle;
}

namespace NS_UTIL {

/// Which list an IPAcl checks against. A list of any other value is never filled and so lets everybody in.
enum IPACLType : std::int32_t { IPACL_OSS = 0 };

/// May a client at this IPv4 address use the agent? Addresses are numbers in host byte order: 127.0.0.1 is
/// 0x7F000001.
///
/// The allowed addresses come from the configuration service, at most once per refresh period. As long as
/// none is configured everybody is allowed; otherwise the configured addresses and 127.0.0.1 are. A value
/// that is no address and no name of one counts as the address 0.0.0.0: a list of nothing else lets in only
/// 127.0.0.1. An empty list is taken as it is, also of a configuration service that says it couldn't read
/// its store: it opens the agent to everybody until the next refresh.
///
/// Any thread may call any operation but Init, which comes ahead of the others. A refresh holds up all checks
/// until the configuration service has answered and every host name is resolved. A lock that can't be taken
/// leaves the error in errno and fails no operation.
class QV_API IPAcl {
  public:
    IPAcl();
    ~IPAcl();

    IPAcl(const IPAcl&) = delete;
    IPAcl& operator=(const IPAcl&) = delete;

    /// Forgets the allowed addresses.
    /// @param fileName full path of the access list file
    /// @param period seconds that must pass, and one more, before the addresses are read again
    void Init(const std::string& fileName, long period, IPACLType type);

    /// True when the address is allowed. Refreshes first if that is due. What the configuration service
    /// raises passes through.
    bool IsValidIP(unsigned int ip);

    /// Reads the allowed addresses again when the period has passed since they were last read.
    void UpdateOssIp();

    /// Writes the access list file, which the checks never read: a header line, then `lines` as they are.
    /// Adds `addresses` to `table` even when the file can't be written.
    /// @return false when the file can't be opened, which the log service is told
    bool RefreshNodeIpAclList(const std::list<std::string>& lines, const std::list<unsigned int>& addresses,
                              std::map<unsigned int, bool>& table);

  private:
    friend class IPAclProbe;  // lets the unit tests set the clock and hold the locks

    bool IsDue(const ACE_Time_Value& lastRefresh) const;
    void ReportUnwritable() const;

    /// The clock; the unit tests put in one that they move by hand.
    static int (*s_pfnGetTimeOfDay)(timeval* now);
    /// Where unwritable files are reported; null until the first report that finds a log service.
    static std::atomic<NS_LOG_SERVICE1::LogHandle*> s_pLog;

    ACE_RW_Mutex m_tableLock;
    ACE_RW_Mutex m_fileLock;
    std::map<unsigned int, bool> m_mapAllowed;  // guarded by m_tableLock; the values are all true
    std::string m_fileName;
    ACE_Time_Value m_lastRefresh;  // guarded by m_tableLock
    long m_period = 0;
    unsigned int m_loopback;
    IPACLType m_type = IPACL_OSS;
    std::atomic<std::int64_t> m_lastRefreshUsec{0};  // m_lastRefresh once more, to be read without the lock
};

}  // namespace NS_UTIL
