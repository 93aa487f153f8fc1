#include "tests/support/certificates/test_authority.h"

#include <ctime>

namespace qv_test {
namespace {

using qv_tools::Identity;
using qv_tools::Period;
using qv_tools::Subject;

constexpr std::time_t kDay = 24L * 60 * 60;  // seconds

Period PeriodOf(Holds holds) {
    const std::time_t now = std::time(nullptr);
    switch (holds) {
        case Holds::kNoMore:
            return {now - 20 * kDay, now - 10 * kDay};
        case Holds::kNotYet:
            return {now + 10 * kDay, now + 100 * kDay};
        case Holds::kNow:
            break;
    }
    return {now - kDay, now + 100 * kDay};
}

Subject AuthorityNamed(const std::string& name) {
    return {name, {}, true};
}

}  // namespace

TestAuthority::TestAuthority(const TempDir& dir, const std::string& name, Holds holds)
    : m_dir(&dir),
      m_identity(MakeSelfSigned(AuthorityNamed(name), PeriodOf(holds))),
      m_file(dir.File(name + ".pem")),
      m_trusted(m_file) {
    qv_tools::WriteFile(m_file, qv_tools::CertificateText({m_identity}), qv_tools::kForReaders);
}

TestAuthority::TestAuthority(const TestAuthority& root, const std::string& name)
    : m_dir(root.m_dir),
      m_identity(qv_tools::Issue(root.m_identity, AuthorityNamed(name), PeriodOf(Holds::kNow))),
      m_file(root.m_dir->File(name + ".pem")),
      m_trusted(root.m_trusted),
      m_chain(root.m_chain) {
    m_chain.insert(m_chain.begin(), m_identity);
    qv_tools::WriteFile(m_file, qv_tools::CertificateText({m_identity}), qv_tools::kForReaders);
}

IssuedFiles TestAuthority::Issue(const std::string& name, const std::string& passPhrase, Holds holds) const {
    const Subject subject{name, {"localhost", "127.0.0.1"}, false};
    const Identity identity = qv_tools::Issue(m_identity, subject, PeriodOf(holds));
    std::vector<Identity> chain{identity};
    chain.insert(chain.end(), m_chain.begin(), m_chain.end());
    const IssuedFiles files{identity, m_dir->File(name + ".pem"), m_dir->File(name + "-key.pem"), passPhrase,
                            m_trusted};
    qv_tools::WriteFile(files.certificate, qv_tools::CertificateText(chain), qv_tools::kForReaders);
    qv_tools::WriteFile(files.key, qv_tools::KeyText(identity, passPhrase), qv_tools::kForOwner);
    return files;
}

TestAuthority TestAuthority::Intermediate(const std::string& name) const {
    return TestAuthority(*this, name);
}

std::string TestAuthority::WriteRevocationList(const std::string& file,
                                               const std::vector<IssuedFiles>& revoked, Holds holds) const {
    std::vector<Identity> identities;
    for (const IssuedFiles& files : revoked) {
        identities.push_back(files.identity);
    }
    return m_dir->Write(file, qv_tools::MakeRevocationList(m_identity, identities, PeriodOf(holds)));
}

qv_tools::ProfileOptions OptionsFor(const IssuedFiles& files) {
    qv_tools::ProfileOptions options;
    options.authenticate = "SERVER_AND_CLIENT";
    options.pass_phrase = files.pass_phrase;
    options.key = files.key;
    options.certificate = files.certificate;
    options.authorities = files.authorities;
    return options;
}

std::string WriteProfile(const TempDir& dir, const std::string& name,
                         const qv_tools::ProfileOptions& options) {
    const std::string path = dir.File(name);
    qv_tools::WriteFile(path, qv_tools::ProfileText(options), qv_tools::kForOwner);
    return path;
}

std::string WriteProfile(const TempDir& dir, const std::string& name, const IssuedFiles& files) {
    return WriteProfile(dir, name, OptionsFor(files));
}

}  // namespace qv_test
