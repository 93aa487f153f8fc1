#pragma once

#include <string>
#include <vector>

#include "tools/certificates/identity.h"

namespace qv_tools {

/// The PEM text of the certificates, in that order. Throws std::runtime_error when OpenSSL fails.
std::string CertificateText(const std::vector<Identity>& chain);

/// The PEM text of the private key, encrypted (AES-256) unless `passPhrase` is empty. Throws
/// std::runtime_error when OpenSSL fails.
std::string KeyText(const Identity& identity, const std::string& passPhrase);

/// The values of a service configuration file; one that is empty is left out of it.
struct ProfileOptions {
    std::string authenticate;  ///< NONE, SERVER, CLIENT or SERVER_AND_CLIENT
    std::string pass_phrase;
    std::string key;  ///< files
    std::string certificate;
    std::string authorities;
    bool no_protection = false;  ///< requests on the plain port are let in
};

/// The text of a service configuration file. The directive stands on one line, as the ORB's reader wants it.
/// The agent's own reader takes a line for a single option, whose value goes to the line's end, and looks at
/// comments as well: for it the options follow one by one in comments. Throws std::invalid_argument when a
/// value can't stand in such a file: one with a quote, a blank or a control character, or all together too
/// long for a line.
std::string ProfileText(const ProfileOptions& options);

/// Puts the text into the file, with those access rights. The file changes at once or not at all. Throws
/// std::runtime_error, which names the file.
void WriteFile(const std::string& path, const std::string& text, unsigned mode);

inline constexpr unsigned kForOwner = 0600;    ///< keys, and profiles for their pass phrase
inline constexpr unsigned kForReaders = 0644;  ///< certificates and revocation lists

}  // namespace qv_tools
