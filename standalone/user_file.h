#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace qv_standalone {

/// A file of users that can't be used; the text names the file and the line, never a hash.
class UserFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Who may log in: names with the Argon2id hashes of their passwords. Constant after it was loaded, so any
/// thread may read it.
class UserFile {
  public:
    /// Reads a TOML file of tables [[user]] with "name" and "password_hash". Throws UserFileError, also when
    /// everyone on the machine may open the file and when it holds no user.
    static UserFile Load(const std::string& path);

    /// The same for text at hand, without a look at permissions. `path` stands in errors only. A text without
    /// any user is fine.
    static UserFile Parse(const std::string& text, const std::string& path);

    /// The hash of that user; null when there is no such user.
    const std::string* HashOf(const std::string& user) const;

    /// Names with the line that their [[user]] begins at, sorted by name.
    const std::map<std::string, std::size_t>& Lines() const { return m_lines; }

    /// The parameters that most of the hashes have: "$argon2id$v=19$m=65536,t=2,p=1$", for instance; empty
    /// without users.
    std::string UsualParameters() const;

  private:
    std::map<std::string, std::string> m_hashes;
    std::map<std::string, std::size_t> m_lines;
};

/// True for a name of 1 to 64 letters, digits and ". _ - @". A name becomes a part of the client's identity,
/// which is taken apart by its tags, so no other character may stand in it.
bool IsUserName(const std::string& name);

/// True for a hash of Argon2id that names its parameters, with a cost that a login can bear: at most 1 GiB
/// and 16 passes.
bool IsPasswordHash(const std::string& hash);

}  // namespace qv_standalone
