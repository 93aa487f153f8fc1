#pragma once

#include <map>
#include <stdexcept>
#include <string>

namespace qv_demo {

/// A file of users that can't be used; the text names the file and the line.
class UserFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Who may log in: names with the Argon2id hashes of their passwords. Constant after it was loaded, so any
/// thread may read it.
class UserFile {
  public:
    /// Reads a TOML file of tables [[user]] with "name" and "password_hash". Raises UserFileError, also when
    /// the file can be read by everyone on the machine and when it holds no user.
    static UserFile Load(const std::string& path);

    /// The hash of that user, as libsodium writes it; null when there is no such user.
    const std::string* HashOf(const std::string& user) const;

    std::size_t size() const { return hashes_.size(); }

  private:
    std::map<std::string, std::string> hashes_;
};

/// True for a name of 1 to 64 letters, digits and ". _ - @". A name becomes a part of the client's identity,
/// which is taken apart by its tags, so no other character may stand in it.
bool IsUserName(const std::string& name);

}  // namespace qv_demo
