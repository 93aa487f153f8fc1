#include "agent/corbabaseagentconfig.h"

#include <openssl/crypto.h>
#include <tao/ORBInitializer_Registry.h>
#include <tao/PI/PI.h>

#include "agent/argument_list.h"
#include "agent/owned_text.h"
#include "agent/singleton.h"
#include "agent/worker.h"
#include "logging/corbalogutil.h"
#include "orb/portability.h"
#include "platform/environment.h"
#include "platform/self_util_common.h"
#include "request/agent_request_interceptor.h"

namespace NS_CORBA {

namespace {

constexpr long kOssListPeriod = 30;  // seconds

}  // namespace

CorbaBaseAgentConfig* CorbaBaseAgentConfig::m_pInstance = nullptr;
bool s_bWorkerStop = false;

CorbaBaseAgentConfig* CorbaBaseAgentConfig::Instance() {
    return CreateOnce(m_pInstance, [] { return new CorbaBaseAgentConfig; });
}

void CorbaBaseAgentConfig::Destroy() {
    if (LoadInstance(m_pInstance) == nullptr) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    delete TakeInstance(m_pInstance);
}

CorbaBaseAgentConfig::CorbaBaseAgentConfig()
    : m_ntIorFile(NewText(NS_UTIL::SelfUtilCommon::getEnvValue("_APP_SHARE_DIR") +
                          "/../NotifyService/var/oss_tmp/nbi/corba/nt.ior")) {}

CorbaBaseAgentConfig::~CorbaBaseAgentConfig() {
    OPENSSL_cleanse(m_NBISSLPrivateKeyPasswd.data(), m_NBISSLPrivateKeyPasswd.size());
    delete[] m_nsIorFile;
    delete[] m_ntIorFile;
    delete[] ior_output_file_;
    FreeArgumentList(m_argv);
    m_RootPOA = PortableServer::POA::_nil();
    m_ORB = CORBA::ORB::_nil();
}

bool CorbaBaseAgentConfig::Init(const std::string& bundleName) {
    SetCorbaBundleName(bundleName);
    m_IPAcl.Init(NS_BUNDLEMGR1::GetXDENEnvironment() + "/../etc/oss_cfg/nbi/corba/conf/" + bundleName +
                     "/corba_oss_ipacl.cfg",
                 kOssListPeriod, NS_UTIL::IPACL_OSS);
    if (!CorbaBaseAgentReConfig()) {
        TA_POS;
        TaTrace("CorbaBaseAgentConfig::CorbaBaseAgentReConfig] failed !\n");
        return false;
    }
    if (!CheckNBISSLCRL()) {
        m_NBISSLCRLCheckStatus = false;
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::Init]: CORBA SSL certificate was revoked\n");
    }
    if (!AutoStartService()) {
        AutoExitService();
        return false;
    }
    try {
        return StartOrb();
    } catch (CORBA::Exception&) {
        TA_POS;
        TaTrace("Exception received during orb initializing!\n");
        return false;
    }
}

bool CorbaBaseAgentConfig::StartOrb() {
    // The ORB takes out what it understands, which must lose neither m_argc nor the strings that m_argv owns.
    int count = GetArgc();
    std::vector<char*> arguments(GetArgv(), GetArgv() + count);
    arguments.push_back(nullptr);

    Server_ORBInitializer* initializer = new Server_ORBInitializer;
    PortableInterceptor::ORBInitializer_var initializerReference = initializer;
    initializer->SetInterceptorName("ZorVexCorbaAgent");
    PortableInterceptor::register_orb_initializer(initializerReference.in());

    LogOrbParams();
    qv_orb::SetIpFlag(true);
    qv_orb::SetServantThreads(ORBThreadPool() ? PoolThreadCount(GetORBThrdNum()) : 1);
    m_ORB = CORBA::ORB_init(count, arguments.data(), nullptr);
    if (CORBA::is_nil(m_ORB.in())) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::Init]: m_ORB is null\n");
        return false;
    }
    CORBA::Object_var object = m_ORB->resolve_initial_references("RootPOA");
    if (CORBA::is_nil(object.in())) {
        return false;
    }
    m_RootPOA = PortableServer::POA::_narrow(object.in());
    return true;
}

void CorbaBaseAgentConfig::LogOrbParams() {
    std::string text("ORB init params:");
    for (int i = 0; i < m_argc; ++i) {
        text.append(m_argv[i]).append(" ");
    }
    TA_POS;
    TaTrace("%s", text.c_str());
}

CORBA::ORB* CorbaBaseAgentConfig::GetOrb() {
    return CORBA::ORB::_duplicate(m_ORB.in());
}

void CorbaBaseAgentConfig::SetOrb(CORBA::ORB* orb) {
    CORBA::ORB_var own =
        CORBA::ORB::_duplicate(orb);  // first, as the old reference may be the last to this ORB
    m_ORB = own._retn();
}

PortableServer::POA* CorbaBaseAgentConfig::GetRootPoa() {
    return PortableServer::POA::_duplicate(m_RootPOA.in());
}

int CorbaBaseAgentConfig::GetArgc() {
    return m_argc;
}

char** CorbaBaseAgentConfig::GetArgv() {
    return m_argv;
}

void CorbaBaseAgentConfig::SetCorbaBundleName(const std::string& name) {
    m_CorbaBundleName = name;
}

std::string CorbaBaseAgentConfig::GetCorbaBundleName() {
    return m_CorbaBundleName;
}

bool CorbaBaseAgentConfig::IsValidOssIP(unsigned int ip) {
    return m_IPAcl.IsValidIP(ip);
}

}  // namespace NS_CORBA
