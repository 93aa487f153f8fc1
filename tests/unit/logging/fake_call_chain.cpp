#include "tests/unit/logging/fake_call_chain.h"

#include <atomic>

namespace qv_test {

CallChainLibrary g_callChain;

namespace {

std::mutex g_lock;
std::vector<std::string> g_names;  // guarded by g_lock
std::atomic<int> g_ids{0};

}  // namespace

std::vector<std::string> TakeCallChainNames() {
    const std::lock_guard<std::mutex> lock(g_lock);
    std::vector<std::string> names;
    names.swap(g_names);
    return names;
}

}  // namespace qv_test

xDENcommon::xDENCallChainInst* xDENcommon::xDENCallChainInstMgr::Instance(const std::string& name) {
    const std::lock_guard<std::mutex> lock(qv_test::g_lock);
    qv_test::g_names.push_back(name);
    return qv_test::g_callChain.instance;
}

std::string xDENcommon::xDENCallChainHelper::GenerateCCUUID() {
    if (qv_test::g_callChain.newId) {
        return qv_test::g_callChain.newId();
    }
    return "id-" + std::to_string(++qv_test::g_ids);
}
