#include "demo/agent/core/password.h"

#include <sodium.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace qv_demo {
namespace {

// Longer ones are no passwords but an attempt to keep the hash busy.
constexpr std::size_t kLongestPassword = 1024;

void InitSodium() {
    static const int result = sodium_init();
    if (result < 0) {
        throw std::runtime_error("the cryptography library can't be initialised");
    }
}

std::string Hash(const char* password, std::size_t length) {
    InitSodium();
    char hash[crypto_pwhash_STRBYTES] = {};
    if (crypto_pwhash_str(hash, password, length, crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
        throw std::runtime_error("not enough memory to hash a password (64 MB are needed)");
    }
    return hash;
}

std::string HashOfNobody() {
    unsigned char random[32] = {};
    InitSodium();
    randombytes_buf(random, sizeof random);
    return Hash(reinterpret_cast<const char*>(random), sizeof random);
}

}  // namespace

std::string HashPassword(const std::string& password) {
    return Hash(password.data(), password.size());
}

void Wipe(std::string& secret) {
    sodium_memzero(secret.data(), secret.size());
    secret.clear();
}

void WipeText(char* secret) {
    if (secret != nullptr) {
        sodium_memzero(secret, std::strlen(secret));
    }
}

PasswordChecker::PasswordChecker(UserFile users, unsigned max_checks, unsigned max_waiting)
    : users_(std::move(users)),
      max_checks_(max_checks),
      max_waiting_(max_waiting),
      hash_of_nobody_(HashOfNobody()) {}

PasswordChecker::Result PasswordChecker::Check(const std::string& user, const char* password) {
    const std::size_t length = strnlen(password, kLongestPassword + 1);
    if (length > kLongestPassword) {
        return Result::kRejected;
    }
    if (!Enter()) {
        return Result::kBusy;
    }
    const std::string* hash = users_.HashOf(user);
    const bool matches =
        crypto_pwhash_str_verify((hash != nullptr ? *hash : hash_of_nobody_).c_str(), password, length) == 0;
    Leave();
    return hash != nullptr && matches ? Result::kAccepted : Result::kRejected;
}

bool PasswordChecker::Enter() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (checking_ >= max_checks_) {
        if (waiting_ >= max_waiting_) {
            return false;
        }
        ++waiting_;
        free_.wait(lock, [this] { return checking_ < max_checks_; });
        --waiting_;
    }
    ++checking_;
    return true;
}

void PasswordChecker::Leave() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        --checking_;
    }
    free_.notify_one();
}

}  // namespace qv_demo
