#include "request/corbasecurity.h"

#include <ace/Guard_T.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Static_Object_Lock.h>

#include "agent/worker.h"
#include "logging/corbalogutil.h"
#include "logging/service_lookup.h"
#include "platform/security_service.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "corbasecurity";
constexpr int kInitLine = 63;
constexpr int kLoginLine = 90;
constexpr int kLoginFailedLine = 93;
constexpr int kLogoutLine = 112;
constexpr int kLogoutFailedLine = 115;
constexpr int kCloseLine = 194;

constexpr long kFirstClientId = 100;
constexpr long kStartedInterval = 100;

using SingletonGuard = ACE_Guard<ACE_Recursive_Thread_Mutex>;

/// The security service. @throws InterfaceNotExistException when it is not there
NS_SECURITY_SERVICE1::SecurityIF& Security() {
    return ServiceLookup<NS_SECURITY_SERVICE1::SecurityIF>("SecurityIF").Get();
}

}  // namespace

CorbaClientInfo::CorbaClientInfo() = default;
CorbaClientInfo::CorbaClientInfo(const CorbaClientInfo& other) = default;
CorbaClientInfo& CorbaClientInfo::operator=(const CorbaClientInfo& other) = default;

bool CorbaClientInfo::operator==(const CorbaClientInfo& other) const {
    return m_strName == other.m_strName && m_strAddress == other.m_strAddress;
}

bool CorbaClientInfo::operator!=(const CorbaClientInfo& other) const {
    return !(*this == other);
}

CorbaClientID::CorbaClientID() {
    m_id = kFirstClientId;
}

CorbaClientID::~CorbaClientID() = default;

CorbaSecurityMgr* CorbaSecurityMgr::m_pInstance = nullptr;

CorbaSecurityMgr::CorbaSecurityMgr() = default;
CorbaSecurityMgr::~CorbaSecurityMgr() = default;

// The pointer is read and written as an atomic, so that a thread which sees it sees the whole object behind
// it.
CorbaSecurityMgr* CorbaSecurityMgr::Instance() {
    CorbaSecurityMgr* instance = __atomic_load_n(&m_pInstance, __ATOMIC_ACQUIRE);
    if (instance) {
        return instance;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    if (!guard.locked()) {
        return nullptr;
    }
    instance = __atomic_load_n(&m_pInstance, __ATOMIC_ACQUIRE);
    if (!instance) {
        instance = new CorbaSecurityMgr;
        __atomic_store_n(&m_pInstance, instance, __ATOMIC_RELEASE);
    }
    return instance;
}

void CorbaSecurityMgr::Destroy() {
    if (!__atomic_load_n(&m_pInstance, __ATOMIC_ACQUIRE)) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    if (!guard.locked() || !m_pInstance) {
        return;
    }
    m_pInstance->ExitThread();
    m_pInstance->wait();
    delete m_pInstance;
    __atomic_store_n(&m_pInstance, static_cast<CorbaSecurityMgr*>(nullptr), __ATOMIC_RELEASE);
}

bool CorbaSecurityMgr::Init() {
    SetPos(kSourceFile, kInitLine);
    TaTrace("[CorbaSecurityMgr::Init] Initializing CorbaSecurityMgr!");
    m_bExit = false;
    m_interval = kStartedInterval;
    open(nullptr);
    return true;
}

int CorbaSecurityMgr::open(void* /*args*/) {
    activate(THR_NEW_LWP, 1, 0, ACE_DEFAULT_THREAD_PRIORITY, -1);
    return 0;
}

int CorbaSecurityMgr::close(u_long /*flags*/) {
    SetPos(kSourceFile, kCloseLine);
    TaTrace("[CorbaSecurityMgr::close] CorbaSecurityMgr has been closed!");
    return 0;
}

int CorbaSecurityMgr::svc() {
    BlockAllSignals();
    return 0;
}

void CorbaSecurityMgr::ExitThread() {
    m_interval = 0;
    m_bExit = true;
    wait();
}

void CorbaSecurityMgr::ShakeHand() {}

int CorbaSecurityMgr::GetUserID(const std::string& /*name*/) {
    return 0;
}

unsigned long CorbaSecurityMgr::Login(const std::string& nmsAddr, const std::string& user,
                                      const std::string& password) {
    const unsigned long code = Login_i(user, password, "CORBA", nmsAddr);
    if (code == 0) {
        SetPos(kSourceFile, kLoginLine);
        TaTrace("[CorbaSecurityMgr::Login] NMS-<%s %s> Login Successfully!", nmsAddr.c_str(), user.c_str());
    } else {
        SetPos(kSourceFile, kLoginFailedLine);
        TaTrace("[CorbaSecurityMgr::Login] NMS-<%s> Login Failed!", nmsAddr.c_str());
    }
    return code;
}

unsigned long CorbaSecurityMgr::Login_i(const std::string& user, const std::string& password,
                                        const std::string& clientType, const std::string& nmsAddr) {
    try {
        return Security().UserLogin(user, password, clientType, nmsAddr, "");
    } catch (const InterfaceNotExistException&) {
        return kNoLoginService;
    }
}

void CorbaSecurityMgr::Logout(const std::string& nmsAddr, const std::string& user) {
    const int code = Logout_i(nmsAddr, user);
    if (code == 0) {
        SetPos(kSourceFile, kLogoutLine);
        TaTrace("[CorbaSecurityMgr::Logout] NMS-<%s %s> Logout Successfully!", nmsAddr.c_str(), user.c_str());
    } else {
        SetPos(kSourceFile, kLogoutFailedLine);
        TaTrace("[CorbaSecurityMgr::Logout] NMS-<%s %s> Logout Failed!code: %d", nmsAddr.c_str(),
                user.c_str(), code);
    }
}

int CorbaSecurityMgr::Logout_i(const std::string& nmsAddr, const std::string& user) {
    try {
        return Security().UserLogout(nmsAddr, user);
    } catch (const InterfaceNotExistException&) {
        return kNoLogoutService;
    }
}

unsigned long CorbaSecurityMgr::checkLogin(const std::string& nmsAddr, const std::string& user,
                                           const std::string& password) {
    try {
        return Security().CheckUserLogin(user, password, nmsAddr);
    } catch (const InterfaceNotExistException&) {
        return kNoLoginService;
    }
}

void CorbaSecurityMgr::EncryptPasswd(const std::string& plainText, std::string& cipherText) {
    Security().EncryptPassword(plainText, cipherText);
}

}  // namespace NS_CORBA
