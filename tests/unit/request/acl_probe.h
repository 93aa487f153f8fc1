#pragma once

#include <sys/time.h>

#include <atomic>

#include "request/aclmgr.h"

namespace NS_UTIL {

/// Opens the access list to its tests.
class IPAclProbe {
  public:
    static void SetClock(int (*clock)(timeval*)) { IPAcl::s_pfnGetTimeOfDay = clock; }
    static auto Clock() { return IPAcl::s_pfnGetTimeOfDay; }
    static void ForgetLog() { IPAcl::s_pLog = nullptr; }
    static ACE_RW_Mutex& TableLock(IPAcl& acl) { return acl.m_tableLock; }
    static ACE_RW_Mutex& FileLock(IPAcl& acl) { return acl.m_fileLock; }
    static std::size_t Size(const IPAcl& acl) { return acl.m_mapAllowed.size(); }
    static bool Holds(const IPAcl& acl, unsigned int ip) { return acl.m_mapAllowed.count(ip) != 0; }
    static unsigned int Loopback(const IPAcl& acl) { return acl.m_loopback; }
};

}  // namespace NS_UTIL

namespace qv_test {

/// While it lives access lists go by a clock that stands still until it is moved.
class AclClock {
  public:
    AclClock() : m_former(NS_UTIL::IPAclProbe::Clock()) {
        Set(1700000000, 0);
        s_fails = false;
        NS_UTIL::IPAclProbe::SetClock(&Read);
    }
    ~AclClock() { NS_UTIL::IPAclProbe::SetClock(m_former); }
    AclClock(const AclClock&) = delete;
    AclClock& operator=(const AclClock&) = delete;

    void Set(long seconds, long usec) { s_usec = seconds * 1000000 + usec; }
    void Advance(long seconds, long usec = 0) { s_usec += seconds * 1000000 + usec; }
    void Fail(bool fails) { s_fails = fails; }

  private:
    static int Read(timeval* now) {
        if (s_fails) {
            return -1;
        }
        const long usec = s_usec;
        now->tv_sec = usec / 1000000;
        now->tv_usec = usec % 1000000;
        return 0;
    }

    static inline std::atomic<long> s_usec{0};
    static inline std::atomic<bool> s_fails{false};
    int (*const m_former)(timeval*);
};

}  // namespace qv_test
