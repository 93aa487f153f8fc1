// Reader of the file that "-ORBSvcConf" names.
#pragma once

#include <string>

#include "orb/ssl/ssl_settings.h"

namespace qv_ssl {

/// Reads the SSLIOP factory's options out of the file. Every other directive is skipped. Accepts what ACE's
/// service configurator does, and besides strings that go over several lines, with or without a backslash at
/// the end of each. An option's value runs to the next word that begins with "-", or to the end of its line;
/// quotes around it are taken off, and $NAME is replaced when the environment has that variable, as ACE does.
/// Throws SslError when the file can't be read, a string has no end, or an option's value can't be used.
ServiceConfig ReadServiceConfigFile(const std::string& path);

/// The same for text that has been read already; `path` is for messages.
ServiceConfig ParseServiceConfig(const std::string& text, const std::string& path);

}  // namespace qv_ssl
