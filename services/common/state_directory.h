// Where a service keeps what outlives it, when nobody names a place.
#pragma once

#include <filesystem>
#include <string>

namespace qv_service {

/// What is particular to a service.
struct StateDirectory {
    const char* variable;  ///< environment variable that names a directory for all of its instances
    const char* folder;    ///< its folder among a user's state
    const char* contents;  ///< what is kept, for the sentence to the operator
};

/// The directory of one instance: `given` by the operator; otherwise `instance` below the first of the
/// variable's directory, the directory of `ior_file`, $XDG_STATE_HOME/folder and $HOME/.local/state/folder.
/// Empty texts count as absent. Always an absolute path. Throws StartError when there is none.
std::filesystem::path ChooseStateDirectory(const StateDirectory& service, const std::string& given,
                                           const std::string& ior_file, const std::string& instance);

}  // namespace qv_service
