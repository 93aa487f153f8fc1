#include "standalone/password.h"

#include <sodium.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace qv_standalone {
namespace {

// Longer ones are no passwords but an attempt to keep the hash busy.
constexpr std::size_t kLongestPassword = 1024;
constexpr const char* kUsualParameters = "$argon2id$v=19$m=65536,t=2,p=1$";

void InitSodium() {
    static const int result = sodium_init();
    if (result < 0) {
        throw std::runtime_error("the cryptography library can't be initialised");
    }
}

template <std::size_t kBytes>
std::string RandomBase64() {
    std::array<unsigned char, kBytes> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    constexpr int kVariant = sodium_base64_VARIANT_ORIGINAL_NO_PADDING;
    char text[sodium_base64_ENCODED_LEN(kBytes, kVariant)];
    return sodium_bin2base64(text, sizeof text, bytes.data(), bytes.size(), kVariant);
}

}  // namespace

std::string HashPassword(const std::string& password) {
    InitSodium();
    if (password.size() > kLongestPassword) {
        throw std::runtime_error("a password has 1024 bytes at most");
    }
    char hash[crypto_pwhash_STRBYTES] = {};
    if (crypto_pwhash_str_alg(hash, password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                              crypto_pwhash_MEMLIMIT_INTERACTIVE, crypto_pwhash_ALG_ARGON2ID13) != 0) {
        throw std::runtime_error("not enough memory to hash a password (64 MiB are needed)");
    }
    return hash;
}

PasswordMatch MatchPassword(const std::string& hash, const std::string& password) {
    InitSodium();
    if (password.size() > kLongestPassword) {
        return PasswordMatch::kNo;
    }
    errno = 0;
    if (crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0) {
        return PasswordMatch::kYes;
    }
    return errno == ENOMEM ? PasswordMatch::kNoMemory : PasswordMatch::kNo;
}

std::string HashOfNobody(const std::string& parameters) {
    InitSodium();
    return (parameters.empty() ? kUsualParameters : parameters) + RandomBase64<16>() + "$" +
           RandomBase64<32>();
}

}  // namespace qv_standalone
