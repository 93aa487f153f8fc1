#include "tools/certificates/credential_files.h"

#include <fcntl.h>
#include <openssl/pem.h>
#include <sys/stat.h>
#include <unistd.h>

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

void AddOption(std::string& lines, const std::string& option, const std::string& prefix,
               const std::string& value) {
    if (value.empty()) {
        return;
    }
    for (const char c : value) {
        if (static_cast<unsigned char>(c) <= ' ' || c == '"' || c == '\'' || c == '\\' || c == 0x7f) {
            throw std::invalid_argument("the value of " + option +
                                        " holds a blank, a quote, a backslash or a control character");
        }
    }
    const std::string line = "     " + option + " " + prefix + value;
    if (line.size() > kLongestLine) {
        throw std::invalid_argument("the value of " + option + " is too long");
    }
    lines += line + "\n";
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
    std::string lines;
    AddOption(lines, "-SSLAuthenticate", "", options.authenticate);
    AddOption(lines, "-SSLPrivateKeyPasswd", "", options.pass_phrase);
    AddOption(lines, "-SSLPrivateKey", "PEM:", options.key);
    AddOption(lines, "-SSLCertificate", "PEM:", options.certificate);
    AddOption(lines, "-SSLCAfile", "PEM:", options.authorities);
    if (options.no_protection) {
        lines += "     -SSLNoProtection\n";
    }
    return "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory()\n    "
           "\"\n" +
           lines + "    \"\nstatic Resource_Factory \"-ORBProtocolFactory SSLIOP_Factory\"\n";
}

void WriteFile(const std::string& path, const std::string& text, unsigned mode) {
    NewFile file(path);
    file.Write(text);
    file.Publish(mode);
}

}  // namespace qv_tools
