#pragma once

#include <string>

namespace qv_standalone {

/// Throws std::runtime_error when the directory that a file of users is to lie in does not exist.
void RequireDirectoryOf(const std::string& path);

/// Puts the user into the file of users, in place of one of the same name, or makes the file. The other
/// lines, comments too, stay. The file changes at once or not at all. Throws std::runtime_error.
void PutUser(const std::string& path, const std::string& name, const std::string& hash);

/// Takes the user out. False when there is no such user. Throws std::runtime_error.
bool RemoveUser(const std::string& path, const std::string& name);

}  // namespace qv_standalone
