#include "request/corbasecurity.h"

#include "agent/signal_mask.h"
#include "agent/singleton.h"
#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"
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

CorbaSecurityMgr* CorbaSecurityMgr::Instance() {
    return CreateOnce(m_pInstance, [] { return new CorbaSecurityMgr; });
}

void CorbaSecurityMgr::Destroy() {
    if (!LoadInstance(m_pInstance)) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    CorbaSecurityMgr* const manager = LoadInstance(m_pInstance);
    if (!guard.locked() || !manager) {
        return;
    }
    manager->ExitThread();
    manager->wait();
    delete TakeInstance(m_pInstance);
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
    LogQuietly([] {
        SetPos(kSourceFile, kCloseLine);
        TaTrace("[CorbaSecurityMgr::close] CorbaSecurityMgr has been closed!");
    });
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
