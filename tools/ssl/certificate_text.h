#pragma once

#include <openssl/types.h>

#include <ctime>
#include <string>

namespace qv_tools {

/// "CN = agent, O = ...", without control characters.
std::string NameText(const X509_NAME* name);

/// "CN = agent, issued by CN = authority".
std::string OwnerText(const X509* certificate);

/// Whole days from `from` to `time`, rounded down and so negative when that is past; 0 for a time that can't
/// be read.
long DaysUntil(const ASN1_TIME* time, std::time_t from);
/// The same from `time` to `now`.
long DaysSince(const ASN1_TIME* time, std::time_t now);

}  // namespace qv_tools
