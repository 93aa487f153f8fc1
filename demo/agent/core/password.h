#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

#include "demo/agent/core/user_file.h"

namespace qv_demo {

/// The Argon2id hash of `password`, ready for the file of users. Raises std::runtime_error when there is not
/// enough memory for it.
std::string HashPassword(const std::string& password);

/// Overwrites the text so that no copy of it stays behind in this buffer, and empties it.
void Wipe(std::string& secret);

/// Overwrites a text up to its end; a null pointer is ignored.
void WipeText(char* secret);

/// Checks passwords against the file of users. Thread-safe.
///
/// A check takes some 0.1 s of a processor and 64 MB on purpose, so a crowd of callers could keep the agent
/// busy with nothing else. Therefore only `max_checks` run at once and only `max_waiting` more callers wait;
/// all others are told at once to come back.
class PasswordChecker {
  public:
    enum class Result { kAccepted, kRejected, kBusy };

    PasswordChecker(UserFile users, unsigned max_checks, unsigned max_waiting);

    /// An unknown user costs as much time as a wrong password, so that names can't be found out by the clock.
    Result Check(const std::string& user, const char* password);

  private:
    bool Enter();
    void Leave();

    const UserFile users_;
    const unsigned max_checks_;
    const unsigned max_waiting_;
    const std::string hash_of_nobody_;

    std::mutex mutex_;
    std::condition_variable free_;
    unsigned checking_ = 0;
    unsigned waiting_ = 0;
};

}  // namespace qv_demo
