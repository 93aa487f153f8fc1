#include "tools/ssl/revocation_check.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

#include "orb/ssl/credentials.h"
#include "tools/ssl/certificate_text.h"
#include "tools/ssl/file_access.h"

namespace qv_tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRevocation = "revocation";

using ListPtr = std::unique_ptr<X509_CRL, qv_ssl::FreeBy<X509_CRL_free>>;

/// OpenSSL would ask on the terminal for the pass phrase of a list that says it is encrypted.
int AskNobody(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*data*/) {
    return -1;
}

/// One revocation list against the agent's certificate.
class ListCheck {
  public:
    ListCheck(std::string file, const LoadedCertificates& loaded, const CheckTime& time, Findings& findings)
        : m_file(std::move(file)), m_loaded(loaded), m_time(time), m_findings(findings) {}

    void Run() {
        if (!CheckReadable(kRevocation, m_file, m_findings) || !Load()) {
            return;
        }
        CheckPermissions(m_file, Secrecy::kPublic, m_findings);
        if (CheckIssuer()) {
            CheckAge();
            CheckOwn();
        }
    }

  private:
    bool Load() {
        const qv_ssl::BioPtr bio(BIO_new_file(m_file.c_str(), "r"));
        if (bio) {
            m_list.reset(PEM_read_bio_X509_CRL(bio.get(), nullptr, &AskNobody, nullptr));
        }
        if (!m_list) {
            m_findings.Error(
                kRevocation, m_file, "it holds no revocation list in PEM form, so it revokes nothing",
                "If it is in DER form: openssl crl -inform DER -in FILE -out FILE. Otherwise take it away.");
            return false;
        }
        const ListPtr second(PEM_read_bio_X509_CRL(bio.get(), nullptr, &AskNobody, nullptr));
        if (second) {
            m_findings.Warn(kRevocation, m_file, "the agent reads its first list only",
                            "Put each list into a file of its own.");
        }
        return true;
    }

    /// Is it by the authority that issued the agent's certificate?
    bool CheckIssuer() {
        const X509_NAME* const issuer = X509_CRL_get_issuer(m_list.get());
        if (m_loaded.own.empty() || m_loaded.authorities.empty()) {
            m_findings.Ok(kRevocation, m_file, "by " + NameText(issuer));
            return false;
        }
        X509* const authority = m_loaded.authorities.front().get();
        if (X509_NAME_cmp(issuer, X509_get_issuer_name(m_loaded.own.front().get())) != 0) {
            m_findings.Warn(
                kRevocation, m_file,
                "by " + NameText(issuer) + ", who didn't issue the agent's certificate, so it has no effect",
                "Take it away, or put a list by the certificate's issuer there.");
            return false;
        }
        if (X509_CRL_verify(m_list.get(), X509_get0_pubkey(authority)) != 1) {
            m_findings.Error(kRevocation, m_file,
                             "it isn't signed by " + NameText(X509_get_subject_name(authority)) +
                                 ", so it revokes nothing",
                             "Fetch the list of the authority again.");
            return false;
        }
        return true;
    }

    void CheckAge() {
        const ASN1_TIME* const made = X509_CRL_get0_lastUpdate(m_list.get());
        const ASN1_TIME* const next = X509_CRL_get0_nextUpdate(m_list.get());
        std::time_t now = m_time.now;
        if (X509_cmp_time(made, &now) > 0) {
            m_findings.Error(
                kRevocation, m_file,
                "its date, " + qv_ssl::TimeText(made) + ", is yet to come, so it revokes nothing",
                "Check this machine's clock.");
        } else if (next != nullptr && X509_cmp_time(next, &now) < 0) {
            m_findings.Error(
                kRevocation, m_file,
                "its next update was due on " + qv_ssl::TimeText(next) + ", so it revokes nothing any more",
                "Fetch the authority's present list and put it in its place.");
        } else {
            m_findings.Ok(kRevocation, m_file, AgeText(made, next));
        }
    }

    std::string AgeText(const ASN1_TIME* made, const ASN1_TIME* next) const {
        return "by " + NameText(X509_CRL_get_issuer(m_list.get())) + ", " +
               std::to_string(DaysSince(made, m_time.now)) + " days old" +
               (next != nullptr ? ", next update in " + std::to_string(DaysUntil(next, m_time.now)) + " days"
                                : "");
    }

    void CheckOwn() {
        X509_REVOKED* entry = nullptr;
        if (X509_CRL_get0_by_cert(m_list.get(), &entry, m_loaded.own.front().get()) == 1) {
            m_findings.Error(
                kRevocation, m_file,
                "the agent's certificate was revoked on " +
                    qv_ssl::TimeText(X509_REVOKED_get0_revocationDate(entry)),
                "Ask for a new certificate. The agent starts with this one, logs that it was revoked, "
                "and peers that look refuse it.");
        }
    }

    const std::string m_file;
    const LoadedCertificates& m_loaded;
    const CheckTime& m_time;
    Findings& m_findings;
    ListPtr m_list;
};

/// The agent knows a list by its name alone.
bool CountsAsList(const std::string& name) {
    return name.find(".crl") != std::string::npos || name.find(".CRL") != std::string::npos;
}

std::vector<std::string> ListFiles(const std::string& directory, Findings& findings) {
    std::error_code error;
    std::vector<std::string> lists;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (CountsAsList(name)) {
            lists.push_back(name);
        } else {
            findings.Warn(kRevocation, directory, name + " isn't looked at, for its name doesn't hold .crl",
                          "Rename it to " + name + ".crl if it is a revocation list.");
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        findings.Error(kRevocation, directory, "it can't be read: " + error.message(),
                       "Give the user that the agent runs as the right to read it.");
    } else if (lists.empty()) {
        findings.Ok(kRevocation, directory, "no revocation lists, so no certificate counts as revoked");
    }
    std::sort(lists.begin(), lists.end());
    return lists;
}

/// The agent's own verification knows one authority and no chain.
void CheckReach(const LoadedCertificates& loaded, const std::string& directory, Findings& findings) {
    if (loaded.own.empty() || loaded.authorities.empty()) {
        return;
    }
    X509* const authority = loaded.authorities.front().get();
    const bool direct = X509_check_issued(authority, loaded.own.front().get()) == X509_V_OK &&
                        X509_check_issued(authority, authority) == X509_V_OK;
    if (!direct) {
        findings.Warn(
            kRevocation, directory,
            "the agent can't notice a revocation: its certificate isn't issued by the first authority of "
            "-SSLCAfile itself, or that one isn't at the end of a chain",
            "Put the authority that issued it first, or look for revocations with this command alone.");
    }
}

}  // namespace

void CheckRevocation(const std::string& directory, const LoadedCertificates& loaded, const CheckTime& time,
                     Findings& findings) {
    const std::vector<std::string> lists = ListFiles(directory, findings);
    if (!lists.empty()) {
        CheckReach(loaded, directory, findings);
    }
    for (const std::string& name : lists) {
        ListCheck((fs::path(directory) / name).string(), loaded, time, findings).Run();
    }
    ERR_clear_error();
}

}  // namespace qv_tools
