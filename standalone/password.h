#pragma once

#include <string>

namespace qv_standalone {

/// The Argon2id hash of `password`, ready for the file of users. Takes some 0.1 s of a processor and 64 MiB.
/// Throws std::runtime_error when there isn't so much memory, or the password is longer than 1024 bytes.
/// Reentrant.
std::string HashPassword(const std::string& password);

enum class PasswordMatch { kYes, kNo, kNoMemory };

/// Checks a password against a hash. Costs what the hash's parameters say. Reentrant.
PasswordMatch MatchPassword(const std::string& hash, const std::string& password);

/// A hash that no password has, of the same cost as others with `parameters` (those of HashPassword when
/// empty): checking it takes the time that a user who exists takes. Made without that cost. Reentrant.
std::string HashOfNobody(const std::string& parameters);

}  // namespace qv_standalone
