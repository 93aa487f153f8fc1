#include "standalone/user_file.h"

#include <sys/stat.h>

#include <toml++/toml.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

namespace qv_standalone {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr unsigned long kMostMemory = 1UL << 20;  // KiB
constexpr unsigned long kMostPasses = 16;

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

/// Length of the part of a hash in front of its salt.
std::size_t ParametersLength(const std::string& hash) {
    std::size_t at = 0;
    for (int dollars = 0; dollars < 4; ++dollars) {
        at = hash.find('$', at);
        if (at == std::string::npos) {
            return 0;
        }
        ++at;
    }
    return at;
}

}  // namespace

bool IsUserName(const std::string& name) {
    static constexpr const char* kAllowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-@";
    return !name.empty() && name.size() <= kLongestName &&
           name.find_first_not_of(kAllowed) == std::string::npos;
}

bool IsPasswordHash(const std::string& hash) {
    unsigned long memory = 0;
    unsigned long passes = 0;
    const std::size_t length = ParametersLength(hash);
    return length != 0 && hash.size() > length && hash.size() < 128 &&
           std::sscanf(hash.c_str(), "$argon2id$v=19$m=%lu,t=%lu,p=1$", &memory, &passes) == 2 &&
           memory >= 8 && memory <= kMostMemory && passes >= 1 && passes <= kMostPasses &&
           hash.find('$', length) != std::string::npos;
}

UserFile UserFile::Parse(const std::string& text, const std::string& path) {
    toml::table root;
    try {
        root = toml::parse(text, path);
    } catch (const toml::parse_error& e) {
        throw UserFileError(Where(path, e.source()) + "not valid TOML");  // its text might quote a hash
    }
    UserFile users;
    const toml::node* const entries = root.get("user");
    if (entries == nullptr) {
        return users;
    }
    if (entries->as_array() == nullptr) {
        throw UserFileError(Where(path, entries->source()) + "a user must be a table [[user]]");
    }
    for (const toml::node& entry : *entries->as_array()) {
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
        if (!IsPasswordHash(hash)) {
            throw UserFileError(Where(path, user->source()) + "the password_hash of \"" + name +
                                "\" is no Argon2id hash of a bearable cost; make one with: qv_user hash");
        }
        if (!users.m_hashes.emplace(name, hash).second) {
            throw UserFileError(Where(path, user->source()) + "the user \"" + name + "\" stands here twice");
        }
        users.m_lines[name] = user->source().begin.line;
    }
    return users;
}

UserFile UserFile::Load(const std::string& path) {
    CheckPermissions(path);
    std::ifstream in(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.is_open() || in.bad()) {
        throw UserFileError(path + ": can't be read: " + std::strerror(errno));
    }
    UserFile users = Parse(text, path);
    if (users.m_hashes.empty()) {
        throw UserFileError(path + ": holds no [[user]]; add one with: qv_user add");
    }
    return users;
}

const std::string* UserFile::HashOf(const std::string& user) const {
    const auto found = m_hashes.find(user);
    return found == m_hashes.end() ? nullptr : &found->second;
}

std::string UserFile::UsualParameters() const {
    std::map<std::string, int> counts;
    std::string usual;
    for (const auto& [name, hash] : m_hashes) {
        const std::string parameters = hash.substr(0, ParametersLength(hash));
        if (++counts[parameters] > counts[usual]) {
            usual = parameters;
        }
    }
    return usual;
}

}  // namespace qv_standalone
