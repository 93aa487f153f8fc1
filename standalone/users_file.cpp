#include "standalone/users_file.h"

#include "standalone/config_store.h"

namespace qv_standalone {

std::string UsersFile() {
    return ConfigStore::Instance().PlatformPath("users_file");
}

}  // namespace qv_standalone
