// How omniNames is told what to serve.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "orb/ssl/ssl_settings.h"
#include "services/common/listen_addresses.h"
#include "services/naming/command_line.h"

namespace qv_naming {

/// The arguments behind the program's name. `ssl` is null where SSL is not asked for.
std::vector<std::string> ServerCommand(const Settings& settings, const qv_ssl::SslSettings* ssl,
                                       const std::filesystem::path& data, const AddressList& addresses);

/// The variables of its environment ("NAME=VALUE") by which it loads `library` and that one finds the SSL
/// options. The pass phrase is in neither: others may read a command line, and an environment goes on to
/// children.
std::vector<std::string> SslVariables(const Settings& settings, const std::string& library);

/// The addresses that clients use, for the operator.
std::string WhereItServes(const Settings& settings, const qv_ssl::SslSettings* ssl);

}  // namespace qv_naming
