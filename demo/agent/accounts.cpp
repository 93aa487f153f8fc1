#include "demo/agent/accounts.h"

#include <cstring>
#include <exception>
#include <utility>

#include "demo/agent/console.h"
#include "demo/agent/failure.h"
#include "logging/corbalogutil.h"
#include "request/corbasecurity.h"
#include "standalone/security_codes.h"
#include "standalone/user_edit.h"
#include "standalone/user_file.h"
#include "tools/secrets/wiper.h"

namespace qv_demo {
namespace {

using NS_CORBA::CorbaSecurityMgr;

constexpr unsigned long kServiceFailed = 0x411a0001;  // a code of this agent's own

/// Fit for a line of a log, whatever a stranger sent as a name.
std::string Printable(const std::string& user) {
    return qv_standalone::IsUserName(user) ? user : "(a name that no user can have)";
}

/// The code that the security service gives. What it raises isn't passed on, since a text that the agent
/// doesn't know might hold the password.
template <class Question>
unsigned long Ask(Question question) {
    try {
        CorbaSecurityMgr* const security = CorbaSecurityMgr::Instance();
        return security == nullptr ? CorbaSecurityMgr::kNoLoginService : question(*security);
    } catch (...) {
        return kServiceFailed;
    }
}

/// Why the service refused, for those who run the EMS.
std::string Reason(unsigned long code) {
    switch (code) {
        case CorbaSecurityMgr::kNoLoginService:
            return "there is no security service";
        case kServiceFailed:
            return "the security service has failed";
        default:
            return qv_standalone::LoginReason(code);
    }
}

/// Raises what the OSS is told of it; `rejected` is the reason when user and password don't go together.
[[noreturn]] void Refuse(unsigned long code, const std::string& rejected) {
    switch (code) {
        case qv_standalone::kLoginRejected:
            Fail(globaldefs::EXCPT_ACCESS_DENIED, rejected);
        case qv_standalone::kLoginLocked:
            Fail(globaldefs::EXCPT_ACCESS_DENIED, Reason(code));
        case qv_standalone::kLoginBusy:
            Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY, "too many logins at once; try again");
        default:
            Fail(globaldefs::EXCPT_ACCESS_DENIED, "no login is possible at the moment");
    }
}

void CheckNewPassword(const char* old_password, const char* new_password) {
    const std::size_t length = strnlen(new_password, Accounts::kLongestPassword + 1);
    if (length < Accounts::kShortestPassword || length > Accounts::kLongestPassword) {
        Fail(globaldefs::EXCPT_INVALID_INPUT, "a password has " +
                                                  std::to_string(Accounts::kShortestPassword) + " to " +
                                                  std::to_string(Accounts::kLongestPassword) + " characters");
    }
    if (std::strcmp(old_password, new_password) == 0) {
        Fail(globaldefs::EXCPT_INVALID_INPUT, "the new password is the old one");
    }
}

std::string Encrypt(const char* password) {
    std::string plain = password;
    const qv_secrets::Wiper wiper(plain);
    std::string hash;
    try {
        CorbaSecurityMgr::Instance()->EncryptPasswd(plain, hash);
    } catch (...) {
        hash.clear();
    }
    if (hash.empty()) {
        Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY, "the password can't be encrypted now; try again");
    }
    return hash;
}

}  // namespace

Accounts::Accounts(std::string users_file) : users_file_(std::move(users_file)) {}

void Accounts::LogIn(const std::string& user, const char* password, const std::string& address) {
    std::string secret = password;
    const qv_secrets::Wiper wiper(secret);
    const unsigned long code =
        Ask([&](CorbaSecurityMgr& security) { return security.Login(address, user, secret); });
    if (code == qv_standalone::kLoginAccepted) {
        return;
    }
    if (code != qv_standalone::kLoginBusy) {  // of a crowd, the security service's own log tells
        const std::string what = Printable(user) + " from " + address;
        TA_POS;
        NS_CORBA::TaDebugWithPara(1, "[Accounts::LogIn] Login of %s refused: %s", what.c_str(),
                                  Reason(code).c_str());
        Say("refused " + what + " (" + Reason(code) + ")");
    }
    Refuse(code, "user or password is wrong");
}

void Accounts::LogOut(const std::string& user, const std::string& address) noexcept {
    Ask([&](CorbaSecurityMgr& security) {
        security.Logout(address, user);
        return 0UL;
    });
}

void Accounts::ChangePassword(const std::string& user, const char* old_password, const char* new_password,
                              const std::string& address) {
    CheckNewPassword(old_password, new_password);
    const std::unique_lock<std::mutex> guard(change_, std::try_to_lock);
    if (!guard) {
        Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY, "another password is being changed; try again");
    }
    std::string secret = old_password;
    const qv_secrets::Wiper wiper(secret);
    const unsigned long code =
        Ask([&](CorbaSecurityMgr& security) { return security.checkLogin(address, user, secret); });
    if (code != qv_standalone::kLoginAccepted) {
        Say("refused to change the password of " + user + " from " + address + " (" + Reason(code) + ")");
        Refuse(code, "the old password is wrong");
    }
    const std::string hash = Encrypt(new_password);
    try {
        qv_standalone::PutUser(users_file_, user, hash);
    } catch (const std::exception& e) {
        TA_POS;
        NS_CORBA::TaDebugWithPara(0, "[Accounts::ChangePassword] %s", e.what());
        Say(std::string("a password can't be changed: ") + e.what());
        Fail(globaldefs::EXCPT_INTERNAL_ERROR, "the EMS can't store the new password; the old one stays");
    }
    Say("changed the password of " + user + " from " + address);
}

}  // namespace qv_demo
