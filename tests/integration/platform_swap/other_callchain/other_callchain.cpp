// Another call chain library, written to the declarations alone, that tells who asks for it.
#include "platform/call_chain.h"

#include <cstdio>

namespace xDENcommon {

xDENCallChainInst* xDENCallChainInstMgr::Instance(const std::string& name) {
    std::printf("other-chain %s\n", name.c_str());
    return nullptr;
}

std::string xDENCallChainHelper::GenerateCCUUID() {
    return "id-of-the-other-platform";
}

}  // namespace xDENcommon
