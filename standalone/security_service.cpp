#include "standalone/security_service.h"

#include <stdexcept>
#include <utility>

#include "standalone/password.h"
#include "standalone/security_codes.h"

namespace qv_standalone {
namespace {

constexpr int kFailure = 1;
constexpr int kTrace = 3;

std::string Named(const std::string& user) {
    return IsUserName(user) ? "\"" + user + "\"" : "with a name that no user can have";
}

}  // namespace

SecurityService::SecurityService(SecurityOptions options, Log log, Clock clock, Match match)
    : m_options(std::move(options)),
      m_log(std::move(log)),
      m_clock(std::move(clock)),
      m_match(std::move(match)),
      m_gate(m_options.max_checks, m_options.max_waiting),
      m_lockout(m_options.max_failures, m_options.lock_time) {
    m_tables.push_back(std::make_unique<const RiskTable>(RiskTable::Default()));
    m_risks = m_tables.back().get();
    Refresh();
}

SecurityService::~SecurityService() = default;

unsigned long SecurityService::UserLogin(const std::string& user, const std::string& password,
                                         const std::string& /*clientType*/, const std::string& nmsAddress,
                                         const std::string& /*reserved*/) {
    return Check("login", user, password, nmsAddress);
}

int SecurityService::UserLogout(const std::string& /*nmsAddress*/, const std::string& /*user*/) {
    return 0;
}

unsigned long SecurityService::CheckUserLogin(const std::string& user, const std::string& password,
                                              const std::string& nmsAddress) {
    return Check("check of a login", user, password, nmsAddress);
}

unsigned long SecurityService::Check(const char* what, const std::string& user, const std::string& password,
                                     const std::string& nmsAddress) {
    Refresh();  // a password that was just changed, or a user taken out, counts from the next login on
    const auto users = CurrentUsers();
    unsigned long code = kLoginNoUsers;
    if (users) {
        // No such name can be in the file, and nobody shall fill the table of failures with them.
        code = IsUserName(user) ? Verify(*users, user, password) : kLoginRejected;
    }
    if (code != kLoginAccepted) {
        m_log(kFailure, std::string(what) + " of user " + Named(user) + " from <" + nmsAddress +
                            "> refused: " + LoginReason(code));
    }
    return code;
}

unsigned long SecurityService::Verify(const Users& users, const std::string& user,
                                      const std::string& password) {
    if (m_lockout.IsLocked(user, m_clock())) {
        return kLoginLocked;
    }
    const CheckGate::Pass pass(m_gate);
    if (!pass) {
        return kLoginBusy;
    }
    // While this caller waited, others may have failed for the same user.
    if (m_lockout.IsLocked(user, m_clock())) {
        return kLoginLocked;
    }
    const std::string* const hash = users.file.HashOf(user);
    const PasswordMatch match = m_match(hash == nullptr ? users.nobody : *hash, password);
    if (match == PasswordMatch::kNoMemory) {
        return kLoginBusy;
    }
    if (hash != nullptr && match == PasswordMatch::kYes) {
        m_lockout.Succeeded(user);
        return kLoginAccepted;
    }
    if (m_lockout.Failed(user, m_clock())) {
        m_log(kFailure, "user " + Named(user) + " is locked for " +
                            std::to_string(m_options.lock_time.count()) + " s after " +
                            std::to_string(m_options.max_failures) + " failed logins");
    }
    return kLoginRejected;
}

void SecurityService::EncryptPassword(const std::string& plainText, std::string& cipherText) {
    cipherText.clear();
    const CheckGate::Pass pass(m_gate);
    if (!pass) {
        throw std::runtime_error("the password can't be encrypted now: " + LoginReason(kLoginBusy));
    }
    cipherText = HashPassword(plainText);
}

int SecurityService::GetOperRiskLevel(const std::string& operation) {
    return m_risks.load(std::memory_order_acquire)->LevelOf(operation);
}

void SecurityService::Refresh() noexcept {
    try {
        std::vector<LogLine> told;
        {
            std::lock_guard<std::mutex> guard(m_refresh_lock);
            RefreshUsers(told);
            RefreshRisks(told);
        }
        // The log may have to be looked up first, which takes locks of the platform.
        for (const LogLine& line : told) {
            m_log(line.level, line.text);
        }
    } catch (...) {
        // No memory: the next time.
    }
}

std::shared_ptr<const SecurityService::Users> SecurityService::CurrentUsers() {
    std::lock_guard<std::mutex> guard(m_users_lock);
    return m_users;
}

void SecurityService::RefreshUsers(std::vector<LogLine>& told) {
    FileStamp stamp = StampOf(m_options.users_file);
    if (m_options.users_file.empty() || stamp == m_users_stamp) {
        return;
    }
    m_users_stamp = std::move(stamp);
    try {
        auto users = std::make_shared<Users>();
        users->file = UserFile::Load(m_options.users_file);
        users->nobody = HashOfNobody(users->file.UsualParameters());
        told.push_back({kTrace, m_options.users_file + ": " + std::to_string(users->file.Lines().size()) +
                                    " user(s) read"});
        std::lock_guard<std::mutex> guard(m_users_lock);
        m_users = std::move(users);
    } catch (const std::exception& error) {
        told.push_back(
            {kFailure, std::string(error.what()) + (CurrentUsers() ? "; the users read before stay in force"
                                                                   : "; nobody can log in")});
    }
}

void SecurityService::RefreshRisks(std::vector<LogLine>& told) {
    FileStamp stamp = StampOf(m_options.risk_file);
    if (m_options.risk_file.empty() || stamp == m_risks_stamp) {
        return;
    }
    m_risks_stamp = std::move(stamp);
    try {
        m_tables.push_back(std::make_unique<const RiskTable>(RiskTable::Load(m_options.risk_file)));
        m_risks.store(m_tables.back().get(), std::memory_order_release);
        told.push_back({kTrace, m_options.risk_file + ": " + std::to_string(m_tables.back()->size()) +
                                    " risk level(s) read"});
    } catch (const std::exception& error) {
        told.push_back({kFailure, std::string(error.what()) + (m_tables.size() > 1
                                                                   ? "; the levels read before stay in force"
                                                                   : "; the built-in levels stay in force")});
    }
}

}  // namespace qv_standalone
