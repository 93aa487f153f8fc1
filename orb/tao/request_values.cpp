#include "orb/request_values.h"

namespace qv_orb {

std::unique_ptr<RequestValues> RequestValues::Of(PortableInterceptor::ServerRequestInfo_ptr) {
    return nullptr;
}

}  // namespace qv_orb
