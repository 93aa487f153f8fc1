#pragma once

#include <ace/Atomic_Op.h>
#include <ace/RW_Mutex.h>
#include <ace/Task.h>
#include <ace/Thread_Manager.h>
#include <ace/Thread_Mutex.h>

#include <string>
#include <vector>

#include "platform/export.h"

namespace NS_CORBA {

/// Two texts of a client: a value. Equal when both texts are, byte for byte.
class QV_API CorbaClientInfo {
  public:
    /// Empty texts, or those of `other`.
    /// @{
    CorbaClientInfo();
    CorbaClientInfo(const CorbaClientInfo& other);
    CorbaClientInfo& operator=(const CorbaClientInfo& other);
    /// @}

    /// Compares both texts, byte for byte.
    /// @{
    bool operator==(const CorbaClientInfo& other) const;
    bool operator!=(const CorbaClientInfo& other) const;
    /// @}

    std::string m_strName;     ///< the client's user
    std::string m_strAddress;  ///< where it calls from
};

/// A counter that starts at 100. Nothing moves it.
class QV_API CorbaClientID {
  public:
    CorbaClientID();
    virtual ~CorbaClientID();

  private:
    friend class CorbaSecurityMgrProbe;  // lets the unit tests see the values that nothing reads

    ACE_Atomic_Op<ACE_Thread_Mutex, long> m_id;
};

/// The agent's door to the platform's security service, for bundles that implement the session manager: logs
/// an OSS in and out, checks a login, encrypts a password. It decides and keeps nothing itself, and no
/// password reaches a log or a member.
///
/// The operations on users work as soon as the object exists; any thread may call them, and they take no lock
/// here. Exceptions of the security service pass through, but for InterfaceNotExistException where a result
/// stands for it. Init and Destroy belong to one thread of the bundle.
///
/// Destroy() waits for the task's thread under the one lock under which every singleton is made. What that
/// thread logs would wait for the same lock if there were no log manager: Destroy() comes before
/// CorbaLogMgr::Destroy().
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): only Destroy ends the one object
class QV_API CorbaSecurityMgr : public ACE_Task_Base {
  public:
    /// The security service is not there: result of Login, Login_i and checkLogin.
    static constexpr unsigned long kNoLoginService = 0x41180006;
    /// The security service is not there: result of Logout_i.
    static constexpr int kNoLogoutService = 0x41180007;

    /// The only object, made by the first call. Null only when the creation lock can't be taken.
    static CorbaSecurityMgr* Instance();
    /// Waits for the task's thread and deletes the object. No other thread may be using it.
    static void Destroy();

    /// Starts the task, whose thread ends at once. Always true.
    bool Init();
    int open(void* args = nullptr) override;  ///< starts the thread; always 0
    int close(u_long flags = 0) override;     ///< called at the thread's end; always 0
    int svc() override;                       ///< what the thread runs: blocks all signals and returns 0
    /// Waits for the task's thread.
    void ExitThread();

    /// Does nothing: shaking hands with the OSS is the bundle's.
    void ShakeHand();
    /// Always 0.
    int GetUserID(const std::string& name);

    /// Logs `user` in from the OSS that the logs show as `nmsAddr`, and traces the outcome. 0 on success,
    /// otherwise the code of the security service or kNoLoginService.
    unsigned long Login(const std::string& nmsAddr, const std::string& user, const std::string& password);
    /// As Login, for any type of client and without a trace.
    unsigned long Login_i(const std::string& user, const std::string& password, const std::string& clientType,
                          const std::string& nmsAddr);
    /// Logs `user` out. Only the trace tells the outcome.
    void Logout(const std::string& nmsAddr, const std::string& user);
    /// As Logout without a trace. 0 on success, otherwise the service's code or kNoLogoutService.
    int Logout_i(const std::string& nmsAddr, const std::string& user);
    /// 0 when the login holds, otherwise the service's code or kNoLoginService.
    unsigned long checkLogin(const std::string& nmsAddr, const std::string& user,
                             const std::string& password);
    /// Fills `cipherText`. @throws InterfaceNotExistException when the security service is not there
    void EncryptPasswd(const std::string& plainText, std::string& cipherText);

    static CorbaSecurityMgr* m_pInstance;  ///< what Instance() has made; null before

  private:
    friend class CorbaSecurityMgrProbe;

    CorbaSecurityMgr();
    ~CorbaSecurityMgr() override;

    ACE_Thread_Manager m_threadMgr;             // of its own, though the task runs in the process-wide one
    std::vector<CorbaClientInfo> m_clientList;  // reserved, as are the next two
    CorbaClientID m_clientId;
    ACE_RW_Mutex m_clientLock;
    bool m_bExit = false;  // nothing waits on it
    long m_interval = 0;   // nothing reads it
};

}  // namespace NS_CORBA
