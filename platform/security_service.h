#pragma once

#include <string>

#include "platform/export.h"
#include "platform/service_interface.h"

/// The platform's security service: users, passwords, sessions and the risk of operations.
namespace NS_SECURITY_SERVICE1 {

/// The security service, found by the name "SecurityIF". The order of the virtual operations is part of the
/// interface. Thread safety: any thread may call any operation. Errors: what an operation raises passes
/// through CorbaSecurityMgr to the bundle. Passwords are passed in clear and must not be logged.
class QV_API SecurityIF : public NS_BUNDLEMGR1::ServiceInterface {
  public:
    /// Logs a user in from the OSS known as `nmsAddress`; `reserved` is passed empty. 0 on success.
    virtual unsigned long UserLogin(const std::string& user, const std::string& password,
                                    const std::string& clientType, const std::string& nmsAddress,
                                    const std::string& reserved) = 0;

    /// Logs a user out. 0 on success.
    virtual int UserLogout(const std::string& nmsAddress, const std::string& user) = 0;

    /// Asks whether a login of that user with that password from that OSS holds: 0 when it does.
    virtual unsigned long CheckUserLogin(const std::string& user, const std::string& password,
                                         const std::string& nmsAddress) = 0;

    /// Encrypts `plainText` into `cipherText`.
    virtual void EncryptPassword(const std::string& plainText, std::string& cipherText) = 0;

    /// How risky an operation is: 0 not audited, 1 a minor risk, 2 a risk. What it raises is logged and costs
    /// the operation's record what was still to come.
    virtual int GetOperRiskLevel(const std::string& operation) = 0;
};

}  // namespace NS_SECURITY_SERVICE1
