#include "services/common/version.h"

namespace qv_service {

std::string VersionText(const std::string& program) {
    return program + " " QV_VERSION "\n";
}

}  // namespace qv_service
