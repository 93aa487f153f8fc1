#include "tools/ssl/trial_credentials.h"

#include <openssl/rand.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "tools/certificates/credential_files.h"
#include "tools/certificates/identity.h"
#include "tools/certificates/openssl_objects.h"

namespace qv_tools {
namespace {

namespace fs = std::filesystem;

constexpr std::time_t kDay = 24L * 60 * 60;  // seconds
constexpr const char* kListDirectory = "etc/ssl/nbi/crl";

std::string RandomPassPhrase() {
    unsigned char octets[16];
    Require(RAND_bytes(octets, sizeof octets) == 1, "no random numbers for a pass phrase");
    std::string text;
    for (const unsigned char octet : octets) {
        text += "0123456789abcdef"[octet >> 4U];
        text += "0123456789abcdef"[octet & 15U];
    }
    return text;
}

/// A directory under a name of its own, which takes its place at the end or goes.
class NewDirectory {
  public:
    explicit NewDirectory(const fs::path& place) : m_place(place) {
        fs::create_directories(place.parent_path());
        std::string name = place.string() + ".XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error(place.string() + " can't be made: " + std::strerror(errno));
        }
        m_path = name;
    }
    ~NewDirectory() {
        if (!m_path.empty()) {
            std::error_code ignored;
            fs::remove_all(m_path, ignored);
        }
    }
    NewDirectory(const NewDirectory&) = delete;
    NewDirectory& operator=(const NewDirectory&) = delete;

    const fs::path& path() const { return m_path; }

    void Publish() {
        if (rename(m_path.c_str(), m_place.c_str()) != 0) {
            throw std::runtime_error(m_place.string() +
                                     (errno == ENOTEMPTY || errno == EEXIST
                                          ? " isn't empty; name another directory"
                                          : std::string(" can't be made: ") + std::strerror(errno)));
        }
        m_path.clear();
    }

  private:
    const fs::path m_place;
    fs::path m_path;
};

class Maker {
  public:
    Maker(const TrialOptions& options, fs::path place)
        : m_options(options),
          m_place(std::move(place)),
          m_directory(m_place),
          m_authority(Authority("authority")) {}

    std::vector<std::string> Run() {
        Certified("server", m_authority, Now());
        Certified("client", m_authority, Now());
        fs::create_directories(m_directory.path() / kListDirectory);
        Write(std::string(kListDirectory) + "/authority.crl", MakeRevocationList(m_authority, {}, Now()),
              kForReaders);
        if (m_options.refused) {
            Certified("stranger", Authority("stranger-authority"), Now());
            Certified("expired", m_authority, {m_options.now - 2 * kDay, m_options.now - kDay});
            Profile("nameless", {});
        }
        m_directory.Publish();
        return m_profiles;
    }

  private:
    Period Now() const { return {m_options.now - 60, m_options.now + m_options.days * kDay}; }

    void Write(const std::string& name, const std::string& text, unsigned mode) const {
        WriteFile((m_directory.path() / name).string(), text, mode);
    }
    std::string Final(const std::string& name) const { return (m_place / name).string(); }

    Identity Authority(const std::string& name) const {
        Identity identity = MakeSelfSigned({name, {}, true}, Now());
        Write(name + ".pem", CertificateText({identity}), kForReaders);
        Write(name + "-key.pem", KeyText(identity, ""), kForOwner);
        return identity;
    }

    void Certified(const std::string& name, const Identity& issuer, const Period& period) {
        const Identity identity = Issue(issuer, {name, m_options.hosts, false}, period);
        ProfileOptions options;
        options.pass_phrase = RandomPassPhrase();
        options.key = Final(name + "-key.pem");
        options.certificate = Final(name + ".pem");
        Write(name + ".pem", CertificateText({identity}), kForReaders);
        Write(name + "-key.pem", KeyText(identity, options.pass_phrase), kForOwner);
        Profile(name, options);
    }

    void Profile(const std::string& name, ProfileOptions options) {
        options.authenticate = "SERVER_AND_CLIENT";
        options.authorities = Final("authority.pem");
        Write(name + ".conf", ProfileText(options), kForOwner);
        m_profiles.push_back(Final(name + ".conf"));
    }

    const TrialOptions& m_options;
    const fs::path m_place;
    NewDirectory m_directory;
    const Identity m_authority;
    std::vector<std::string> m_profiles;
};

}  // namespace

std::vector<std::string> MakeTrialCredentials(const TrialOptions& options) {
    fs::path place = fs::absolute(options.directory).lexically_normal();
    if (!place.has_filename()) {
        place = place.parent_path();  // written with a slash at its end
    }
    return Maker(options, place).Run();
}

}  // namespace qv_tools
