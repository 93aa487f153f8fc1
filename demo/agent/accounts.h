#pragma once

#include <mutex>
#include <string>

namespace qv_demo {

/// The users of the EMS: logs them in and out with the platform's security service, and changes their
/// passwords. What it is asked with is never written anywhere but, as a hash, to the file of users.
/// Thread-safe.
class Accounts {
  public:
    /// `users_file` is the file that the security service reads.
    explicit Accounts(std::string users_file);

    /// Raises EXCPT_ACCESS_DENIED, with the reason, when the login isn't accepted, and EXCPT_UNABLE_TO_COMPLY
    /// when too many are being checked. `address` is "host:port".
    void LogIn(const std::string& user, const char* password, const std::string& address);

    /// Raises nothing.
    static void LogOut(const std::string& user, const std::string& address) noexcept;

    /// Gives a user who is logged in another password; the next login needs it. The file changes at once or
    /// not at all. Raises EXCPT_ACCESS_DENIED when the old password is wrong, EXCPT_INVALID_INPUT when the
    /// new one is unfit, EXCPT_UNABLE_TO_COMPLY when too much is going on, EXCPT_INTERNAL_ERROR when the file
    /// can't be written.
    void ChangePassword(const std::string& user, const char* old_password, const char* new_password,
                        const std::string& address);

    static constexpr std::size_t kShortestPassword = 8;
    static constexpr std::size_t kLongestPassword = 1024;

  private:
    const std::string users_file_;
    std::mutex change_;  // of the file, one at a time
};

}  // namespace qv_demo
