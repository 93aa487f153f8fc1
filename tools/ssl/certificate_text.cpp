#include "tools/ssl/certificate_text.h"

#include <openssl/asn1.h>
#include <openssl/x509.h>

#include "orb/ssl/openssl_types.h"

namespace qv_tools {
namespace {

std::time_t TimeOf(const ASN1_TIME* time, std::time_t otherwise) {
    std::tm parts{};
    return ASN1_TIME_to_tm(time, &parts) == 1 ? timegm(&parts) : otherwise;
}

long WholeDays(std::time_t from, std::time_t to) {
    constexpr long kDay = 24L * 60 * 60;  // seconds
    const long seconds = to - from;
    return seconds / kDay - (seconds % kDay < 0 ? 1 : 0);
}

}  // namespace

std::string NameText(const X509_NAME* name) {
    const qv_ssl::BioPtr memory(BIO_new(BIO_s_mem()));
    if (!memory || X509_NAME_print_ex(memory.get(), name, 0, XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB) < 0) {
        return "an unknown name";
    }
    const char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return size <= 0 ? "an empty name" : std::string(text, static_cast<std::size_t>(size));
}

std::string OwnerText(const X509* certificate) {
    return NameText(X509_get_subject_name(certificate)) + ", issued by " +
           NameText(X509_get_issuer_name(certificate));
}

long DaysUntil(const ASN1_TIME* time, std::time_t from) {
    return WholeDays(from, TimeOf(time, from));
}

long DaysSince(const ASN1_TIME* time, std::time_t now) {
    return WholeDays(TimeOf(time, now), now);
}

}  // namespace qv_tools
