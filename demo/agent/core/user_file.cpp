#include "demo/agent/core/user_file.h"

#include <sys/stat.h>

#include <toml++/toml.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

namespace qv_demo {
namespace {

constexpr std::size_t kLongestName = 64;

std::string Where(const std::string& path, const toml::source_region& region) {
    return path + ":" + std::to_string(region.begin.line) + ": ";
}

void CheckPermissions(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        throw UserFileError(path + ": can't be opened: " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw UserFileError(path + ": is not a file");
    }
    if ((status.st_mode & S_IRWXO) != 0) {
        throw UserFileError(path + ": everyone on this machine may open it; use: chmod o= " + path);
    }
}

std::string TextOf(const toml::table& user, const char* key, const std::string& path) {
    const auto text = user[key].value<std::string>();
    if (!text) {
        throw UserFileError(Where(path, user.source()) + "a user needs \"" + key + "\" as a text");
    }
    return *text;
}

}  // namespace

bool IsUserName(const std::string& name) {
    static const std::string kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-@";
    return !name.empty() && name.size() <= kLongestName &&
           name.find_first_not_of(kAllowed) == std::string::npos;
}

UserFile UserFile::Load(const std::string& path) {
    CheckPermissions(path);
    toml::table root;
    try {
        root = toml::parse_file(path);
    } catch (const toml::parse_error& e) {
        throw UserFileError(Where(path, e.source()) + "not valid TOML: " + std::string(e.description()));
    }
    UserFile users;
    const toml::array* entries = root["user"].as_array();
    if (entries == nullptr || entries->empty()) {
        throw UserFileError(path + ": holds no [[user]]");
    }
    for (const toml::node& entry : *entries) {
        const toml::table* user = entry.as_table();
        if (user == nullptr) {
            throw UserFileError(Where(path, entry.source()) + "a user must be a table [[user]]");
        }
        const std::string name = TextOf(*user, "name", path);
        const std::string hash = TextOf(*user, "password_hash", path);
        if (!IsUserName(name)) {
            throw UserFileError(Where(path, user->source()) +
                                "a name consists of 1 to 64 letters, digits and . _ - @");
        }
        if (hash.rfind("$argon2id$", 0) != 0) {
            throw UserFileError(Where(path, user->source()) + "the password_hash of \"" + name +
                                "\" is no Argon2id hash; make one with: qv_demo_agent --hash-password");
        }
        if (!users.hashes_.emplace(name, hash).second) {
            throw UserFileError(Where(path, user->source()) + "the user \"" + name + "\" stands here twice");
        }
    }
    return users;
}

const std::string* UserFile::HashOf(const std::string& user) const {
    const auto found = hashes_.find(user);
    return found == hashes_.end() ? nullptr : &found->second;
}

}  // namespace qv_demo
