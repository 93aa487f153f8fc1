#include "demo/agent/failure.h"

namespace qv_demo {

void Fail(globaldefs::ExceptionType_T type, const std::string& reason) {
    throw globaldefs::ProcessingFailureException(type, reason.c_str());
}

}  // namespace qv_demo
