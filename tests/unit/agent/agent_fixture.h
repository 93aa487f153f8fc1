#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <string>
#include <utility>
#include <vector>

#include "agent/corbabaseagentconfig.h"
#include "agent/distributesvcmgrrefpoamgr.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/config_items.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace NS_CORBA {

/// Opens the configuration singleton where no accessor leads.
class CorbaBaseAgentConfigProbe {
  public:
    using Config = CorbaBaseAgentConfig;

    static Config& Get() { return *Config::Instance(); }
    static Config* RawInstance() { return Config::m_pInstance; }
    static void SetGracePeriod(void (*sleep)(time_t)) { Config::s_pfnGracePeriod = sleep; }
    static auto GracePeriod() { return Config::s_pfnGracePeriod; }

#define QV_PROBE(name, member) \
    static auto& name() {      \
        return Get().member;   \
    }
    QV_PROBE(HostName, m_HostName)
    QV_PROBE(NsIorFile, m_nsIorFile)
    QV_PROBE(NtIorFile, m_ntIorFile)
    QV_PROBE(OutIorFile, ior_output_file_)
    QV_PROBE(IDLVersion, m_IDLVersion)
    QV_PROBE(EmsName, m_EmsName)
    QV_PROBE(EmsType, m_EmsType)
    QV_PROBE(EmsLocation, m_EmsLocation)
    QV_PROBE(NamingServiceName, m_NamingServiceName)
    QV_PROBE(NamingServiceHost, m_NamingServiceHost)
    QV_PROBE(NamingServiceOption, m_NamingServiceOption)
    QV_PROBE(NotifyServiceName, m_NotifyServiceName)
    QV_PROBE(NotifyServiceHost, m_NotifyServiceHost)
    QV_PROBE(NotifyServiceOption, m_NotifyServiceOption)
    QV_PROBE(CorbaAgentHost, m_CorbaAgentHost)
    QV_PROBE(CorbaAgentOption, m_CorbaAgentOption)
    QV_PROBE(NamingServiceCmd, m_NamingServiceCmd)
    QV_PROBE(NotifyServiceCmd, m_NotifyServiceCmd)
    QV_PROBE(CorbaAgentCmd, m_CorbaAgentCmd)
    QV_PROBE(ServicePids, m_mapServicePid)
    QV_PROBE(Mutex, m_mutex)
    QV_PROBE(RwLock, m_rwLock)
    QV_PROBE(SSLProfile, m_SSLProfile)
    QV_PROBE(NonSSLProfile, m_NonSSLProfile)
    QV_PROBE(IPAcl, m_IPAcl)
    QV_PROBE(Flags, m_vecFlags)
    QV_PROBE(SSLMode, m_SSLMode)
    QV_PROBE(RefCount, m_refCount)
    QV_PROBE(NamingServicePort, m_NamingServicePort)
    QV_PROBE(NamingServiceSSLPort, m_NamingServiceSSLPort)
    QV_PROBE(NotifyServicePort, m_NotifyServicePort)
    QV_PROBE(NotifyServiceSSLPort, m_NotifyServiceSSLPort)
    QV_PROBE(CorbaAgentPort, m_CorbaAgentPort)
    QV_PROBE(CorbaAgentSSLPort, m_CorbaAgentSSLPort)
    QV_PROBE(ORBThreadPool, m_ORBThreadPool)
    QV_PROBE(ORBThrdNum, m_ORBThrdNum)
    QV_PROBE(NamingServiceAutoStart, m_NamingServiceAutoStart)
    QV_PROBE(NotifyServiceAutoStart, m_NotifyServiceAutoStart)
    QV_PROBE(NBISSLCRLCheckStatus, m_NBISSLCRLCheckStatus)
    QV_PROBE(RootPOA, m_RootPOA)
    QV_PROBE(SingleThreadPushEvent, m_SingleThreadPushEvent)
#undef QV_PROBE
};

/// Opens the POA store to the tests of its lock.
class DistriSvcMgrRefPoaMgrProbe {
  public:
    static ACE_RW_Mutex& Lock() { return DistriSvcMgrRefPoaMgr::Instance()->m_lock; }
    static std::size_t Size() { return DistriSvcMgrRefPoaMgr::Instance()->m_mapPoa.size(); }
};

}  // namespace NS_CORBA

namespace qv_test {

using Probe = NS_CORBA::CorbaBaseAgentConfigProbe;

inline constexpr const char* kSys = "corbasys";
inline constexpr const char* kDebug = "corbadebug";

/// The line of the position that the call holding `snippet` sets, in `agent/<file>.cpp`. The snippet must
/// occur exactly once; -1, with a failure, when it doesn't.
int LineOfCall(const std::string& file, const std::string& snippet);

/// A fresh configuration singleton over an in-memory store, and open log channels that end in memory.
class AgentTest : public ::testing::Test {
  protected:
    AgentTest();
    ~AgentTest() override;

    NS_CORBA::CorbaBaseAgentConfig& config() { return *NS_CORBA::CorbaBaseAgentConfig::Instance(); }

    /// Fails unless `text` was logged to `channel` at `level` from `agent/<file>.cpp`, at the call that holds
    /// `snippet` (by default the text itself).
    void ExpectLog(const std::string& channel, int level, const std::string& file, const std::string& text,
                   std::string snippet = {});
    /// As ExpectLog, for a record that begins with `prefix` and goes on in a way that the test can't know.
    void ExpectLogPrefix(const std::string& channel, int level, const std::string& file,
                         const std::string& prefix, std::string snippet = {});
    /// Fails unless TaException wrote `text` and something behind it, from that place.
    void ExpectExceptionLog(const std::string& file, const std::string& text);

    int CountLog(const std::string& channel, const std::string& text);

    /// Makes an ORB on a free port of 127.0.0.1, as Init does but without the request gate, and hands it to
    /// the singleton. `options` go to the ORB as they are.
    CORBA::ORB_ptr MakeOrb(const std::vector<std::string>& options = {});

    ScopedLogCapture m_log;
    ScopedConfigItems m_items;
    TempDir m_dir;

  private:
    void ExpectEntry(const std::string& channel, int level, const std::string& file, const std::string& text,
                     bool whole, const std::string& snippet);
};

/// The node name as the system tells it.
std::string NodeName();

}  // namespace qv_test
