#include "tools/certificates/identity.h"

#include <arpa/inet.h>
#include <openssl/pem.h>

#include "tools/certificates/openssl_objects.h"

namespace qv_tools {
namespace {

constexpr int kSerialBits = 127;  // positive, and within the 20 octets that a serial number may have

void AddExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX context{};
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const ExtensionPtr extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    Require(extension != nullptr, "an extension can't be made");
    Require(X509_add_ext(certificate, extension.get(), -1) == 1, "an extension can't be added");
}

std::string AlternativeNames(const std::vector<std::string>& hosts) {
    std::string names;
    for (const std::string& host : hosts) {
        unsigned char address[sizeof(in6_addr)];
        const bool numeric =
            inet_pton(AF_INET, host.c_str(), address) == 1 || inet_pton(AF_INET6, host.c_str(), address) == 1;
        names += (names.empty() ? "" : ",") + std::string(numeric ? "IP:" : "DNS:") + host;
    }
    return names;
}

void SetSerial(X509* certificate) {
    const BigNumberPtr number(BN_new());
    Require(number != nullptr &&
                BN_rand(number.get(), kSerialBits, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1 &&
                BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate)) != nullptr,
            "a serial number can't be made");
}

void SetName(X509* certificate, const std::string& name) {
    Require(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0) == 1,
            "the name can't be set");
}

void SetPeriod(X509* certificate, const Period& period) {
    Require(ASN1_TIME_set(X509_getm_notBefore(certificate), period.from) != nullptr &&
                ASN1_TIME_set(X509_getm_notAfter(certificate), period.until) != nullptr,
            "the period can't be set");
}

void AddPurpose(X509* certificate, X509* issuer, const Subject& subject) {
    AddExtension(certificate, issuer, NID_subject_key_identifier, "hash");
    AddExtension(certificate, issuer, NID_authority_key_identifier, "keyid");
    if (subject.authority) {
        AddExtension(certificate, issuer, NID_basic_constraints, "critical,CA:TRUE");
        AddExtension(certificate, issuer, NID_key_usage, "critical,keyCertSign,cRLSign");
        return;
    }
    AddExtension(certificate, issuer, NID_basic_constraints, "critical,CA:FALSE");
    AddExtension(certificate, issuer, NID_key_usage, "critical,digitalSignature,keyAgreement");
    AddExtension(certificate, issuer, NID_ext_key_usage, "serverAuth,clientAuth");
    if (!subject.hosts.empty()) {
        AddExtension(certificate, issuer, NID_subject_alt_name, AlternativeNames(subject.hosts));
    }
}

/// Without an issuer the new certificate is its own.
Identity Make(const Identity* issuer, const Subject& subject, const Period& period) {
    KeyPtr key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
    Require(key != nullptr, "a key can't be made");
    CertificatePtr certificate(X509_new());
    Require(certificate != nullptr && X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
                X509_set_pubkey(certificate.get(), key.get()) == 1,
            "a certificate can't be made");
    SetSerial(certificate.get());
    SetName(certificate.get(), subject.name);
    SetPeriod(certificate.get(), period);
    X509* const by = issuer != nullptr ? issuer->certificate.get() : certificate.get();
    Require(X509_set_issuer_name(certificate.get(), X509_get_subject_name(by)) == 1,
            "the issuer can't be set");
    AddPurpose(certificate.get(), by, subject);
    Require(X509_sign(certificate.get(), issuer != nullptr ? issuer->key.get() : key.get(), EVP_sha256()) > 0,
            "a certificate can't be signed");
    return {std::move(key), std::move(certificate)};
}

void AddRevoked(X509_CRL* list, const Identity& identity, const ASN1_TIME* date) {
    RevokedPtr entry(X509_REVOKED_new());
    Require(entry != nullptr &&
                X509_REVOKED_set_serialNumber(entry.get(),
                                              X509_get_serialNumber(identity.certificate.get())) == 1 &&
                X509_REVOKED_set_revocationDate(entry.get(), const_cast<ASN1_TIME*>(date)) == 1 &&
                X509_CRL_add0_revoked(list, entry.get()) == 1,
            "a certificate can't be put on the revocation list");
    static_cast<void>(entry.release());  // the list's now
}

std::string PemText(X509_CRL* list) {
    const BioPtr memory(BIO_new(BIO_s_mem()));
    Require(memory != nullptr && PEM_write_bio_X509_CRL(memory.get(), list) == 1,
            "a revocation list can't be written as PEM");
    const char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return std::string(text, static_cast<std::size_t>(size));
}

}  // namespace

Identity MakeSelfSigned(const Subject& subject, const Period& period) {
    return Make(nullptr, subject, period);
}

Identity Issue(const Identity& issuer, const Subject& subject, const Period& period) {
    return Make(&issuer, subject, period);
}

std::string MakeRevocationList(const Identity& issuer, const std::vector<Identity>& revoked,
                               const Period& period) {
    const RevocationListPtr list(X509_CRL_new());
    const TimePtr date(ASN1_TIME_set(nullptr, period.from));
    const TimePtr next(ASN1_TIME_set(nullptr, period.until));
    Require(list != nullptr && date != nullptr && next != nullptr &&
                X509_CRL_set_version(list.get(), X509_CRL_VERSION_2) == 1 &&
                X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(issuer.certificate.get())) == 1 &&
                X509_CRL_set1_lastUpdate(list.get(), date.get()) == 1 &&
                X509_CRL_set1_nextUpdate(list.get(), next.get()) == 1,
            "a revocation list can't be made");
    for (const Identity& identity : revoked) {
        AddRevoked(list.get(), identity, date.get());
    }
    Require(X509_CRL_sort(list.get()) == 1 && X509_CRL_sign(list.get(), issuer.key.get(), EVP_sha256()) > 0,
            "a revocation list can't be signed");
    return PemText(list.get());
}

}  // namespace qv_tools
