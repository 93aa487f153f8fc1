#include "tools/certificates/credential_files.h"

#include <fcntl.h>
#include <openssl/pem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/certificates/openssl_objects.h"

namespace qv_tools {
namespace {

constexpr std::size_t kLongestLine = 511;  // the agent doesn't get past a longer one

std::string ContentsOf(BIO* memory) {
    const char* text = nullptr;
    const long size = BIO_get_mem_data(memory, &text);
    return std::string(text, static_cast<std::size_t>(size));
}

/// The option with its value; nothing for one without.
std::string OptionText(const std::string& option, const std::string& prefix, const std::string& value) {
    const bool fits = std::none_of(value.begin(), value.end(), [](unsigned char c) {
        return c <= ' ' || c == 0x7f || c == '"' || c == '\'' || c == '\\' || c == '#' || c == '$';
    });
    if (!fits) {
        throw std::invalid_argument("the value of " + option +
                                    " holds a character that can't stand in a service configuration file");
    }
    return value.empty() ? "" : option + " " + prefix + value;
}

[[noreturn]] void FailToWrite(const std::string& path) {
    throw std::runtime_error(path + " can't be written: " + std::strerror(errno));
}

/// A file beside the one to be written, gone again at the end unless it took that one's place.
class NewFile {
  public:
    explicit NewFile(const std::string& path) : m_path(path), m_name(path + ".XXXXXX") {
        m_fd = mkostemp(m_name.data(), O_CLOEXEC);
        if (m_fd < 0) {
            FailToWrite(m_path);
        }
    }
    ~NewFile() {
        if (m_fd >= 0) {
            close(m_fd);
            unlink(m_name.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void Write(const std::string& text) const {
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t written = write(m_fd, text.data() + done, text.size() - done);
            if (written < 0 && errno != EINTR) {
                FailToWrite(m_path);
            }
            done += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
    }

    void Publish(unsigned mode) {
        if (fchmod(m_fd, mode) != 0 || fsync(m_fd) != 0 || rename(m_name.c_str(), m_path.c_str()) != 0) {
            FailToWrite(m_path);
        }
        close(m_fd);
        m_fd = -1;
    }

  private:
    const std::string m_path;
    std::string m_name;
    int m_fd = -1;
};

}  // namespace

std::string CertificateText(const std::vector<Identity>& chain) {
    const BioPtr memory(BIO_new(BIO_s_mem()));
    Require(memory != nullptr, "no memory");
    for (const Identity& identity : chain) {
        Require(PEM_write_bio_X509(memory.get(), identity.certificate.get()) == 1,
                "a certificate can't be written as PEM");
    }
    return ContentsOf(memory.get());
}

std::string KeyText(const Identity& identity, const std::string& passPhrase) {
    const BioPtr memory(BIO_new(BIO_s_secmem()));
    Require(memory != nullptr, "no memory");
    const EVP_CIPHER* const cipher = passPhrase.empty() ? nullptr : EVP_aes_256_cbc();
    Require(PEM_write_bio_PKCS8PrivateKey(memory.get(), identity.key.get(), cipher, passPhrase.data(),
                                          static_cast<int>(passPhrase.size()), nullptr, nullptr) == 1,
            "a key can't be written as PEM");
    return ContentsOf(memory.get());
}

std::string ProfileText(const ProfileOptions& options) {
    std::string directive =
        "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory() \"";
    std::string comments;
    for (const std::string& option : {OptionText("-SSLPrivateKeyPasswd", "", options.pass_phrase),
                                      OptionText("-SSLPrivateKey", "PEM:", options.key),
                                      OptionText("-SSLCertificate", "PEM:", options.certificate),
                                      OptionText("-SSLCAfile", "PEM:", options.authorities)}) {
        if (!option.empty()) {
            directive += option + " ";
            comments += "# " + option + "\n";
        }
    }
    directive += OptionText("-SSLAuthenticate", "", options.authenticate);
    directive += options.no_protection ? " -SSLNoProtection\"" : "\"";
    if (directive.size() > kLongestLine) {
        throw std::invalid_argument("the options are too long for a line of " + std::to_string(kLongestLine) +
                                    " characters: use shorter paths");
    }
    return directive +
           "\nstatic Resource_Factory \"-ORBProtocolFactory SSLIOP_Factory\"\n"
           "# The agent takes the options from the lines below. Keep them the same as above.\n" +
           comments;
}

void WriteFile(const std::string& path, const std::string& text, unsigned mode) {
    NewFile file(path);
    file.Write(text);
    file.Publish(mode);
}

}  // namespace qv_tools
