#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/security_service.h"
#include "standalone/check_gate.h"
#include "standalone/file_stamp.h"
#include "standalone/lockout.h"
#include "standalone/password.h"
#include "standalone/risk_table.h"
#include "standalone/user_file.h"

namespace qv_standalone {

struct SecurityOptions {
    std::string users_file;  ///< empty: nobody can log in
    std::string risk_file;   ///< empty: the built-in levels
    unsigned max_failures = 5;
    std::chrono::seconds lock_time{300};
    unsigned max_checks = 2;    ///< password checks at once; each takes 64 MiB
    unsigned max_waiting = 16;  ///< callers that wait for one
};

/// The security service of the stand-alone platform: users with Argon2id hashes from a file, and a table of
/// risk levels. Results of logins are those of security_codes.h. A user who logs in isn't recorded, so a
/// logout always succeeds, and CheckUserLogin says whether the password is right now. Neither a password nor
/// a hash ever reaches a log.
class SecurityService final : public NS_SECURITY_SERVICE1::SecurityIF {
  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    /// Takes a line for the service's log; level as in LogHandle::Write. Must not throw.
    using Log = std::function<void(int level, const std::string& text)>;

    /// Checks a password against a hash, as MatchPassword.
    using Match = std::function<PasswordMatch(const std::string& hash, const std::string& password)>;

    SecurityService(
        SecurityOptions options, Log log, Clock clock = [] { return std::chrono::steady_clock::now(); },
        Match match = MatchPassword);
    ~SecurityService() override;

    unsigned long UserLogin(const std::string& user, const std::string& password,
                            const std::string& clientType, const std::string& nmsAddress,
                            const std::string& reserved) override;
    int UserLogout(const std::string& nmsAddress, const std::string& user) override;
    unsigned long CheckUserLogin(const std::string& user, const std::string& password,
                                 const std::string& nmsAddress) override;

    /// Fills in an Argon2id hash for the file of users. Throws std::runtime_error, with `cipherText` empty,
    /// when there is no memory for it or too many checks are under way.
    void EncryptPassword(const std::string& plainText, std::string& cipherText) override;

    /// Takes no lock and looks at no file.
    int GetOperRiskLevel(const std::string& operation) override;

    /// Reads the files that have changed. A file that can't be used leaves in force what was read before, and
    /// is told on the log once. Each login does so first; for the levels it is to be called regularly. Never
    /// throws.
    void Refresh() noexcept;

  private:
    struct Users {
        UserFile file;
        std::string nobody;  // costs the time of a user when there is none
    };
    struct LogLine {
        int level;
        std::string text;
    };

    unsigned long Check(const char* what, const std::string& user, const std::string& password,
                        const std::string& nmsAddress);
    unsigned long Verify(const Users& users, const std::string& user, const std::string& password);
    std::shared_ptr<const Users> CurrentUsers();
    void RefreshUsers(std::vector<LogLine>& told);
    void RefreshRisks(std::vector<LogLine>& told);

    const SecurityOptions m_options;
    const Log m_log;
    const Clock m_clock;
    const Match m_match;
    CheckGate m_gate;
    Lockout m_lockout;

    std::mutex m_refresh_lock;  // one Refresh at a time; guards the stamps and the tables
    FileStamp m_users_stamp;
    FileStamp m_risks_stamp;
    // Each table that was ever in force: a reader may still stand in an old one. Some kilobytes per change.
    std::vector<std::unique_ptr<const RiskTable>> m_tables;

    std::atomic<const RiskTable*> m_risks{nullptr};
    std::mutex m_users_lock;  // guards the pointer
    std::shared_ptr<const Users> m_users;
};

}  // namespace qv_standalone
