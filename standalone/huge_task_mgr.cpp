#include "platform/huge_task_mgr.h"

#include <mutex>
#include <set>
#include <string>

#include "standalone/thread_context_data.h"
#include "standalone/thread_setup.h"

namespace NS_UTIL {
namespace {

/// The tasks on record. Never destroyed, since threads may still ask during process exit.
struct Tasks {
    std::mutex lock;
    std::set<std::string> ids;
};

Tasks& AllTasks() {
    static auto* const tasks = new Tasks;
    return *tasks;
}

}  // namespace

HugeTaskMgr::HugeTaskMgr() = default;
HugeTaskMgr::~HugeTaskMgr() = default;

HugeTaskMgr* HugeTaskMgr::Instance() {
    static auto* const instance = new HugeTaskMgr;
    return instance;
}

bool HugeTaskMgr::IsSynHTsk() {
    const std::string task = ThreadContextAccess::TaskOf(CurrentThreadContext());
    if (task.empty()) {
        return false;
    }
    std::lock_guard<std::mutex> guard(AllTasks().lock);
    return AllTasks().ids.count(task) != 0;
}

void HugeTaskMgr::RemoveHTskInfo(const ThreadContextInfo& context) {
    std::lock_guard<std::mutex> guard(AllTasks().lock);
    AllTasks().ids.erase(ThreadContextAccess::TaskOf(context));
}

}  // namespace NS_UTIL

namespace qv_standalone {

void RegisterSynHugeTask(const NS_UTIL::ThreadContextInfo& context) {
    const std::string task = NS_UTIL::ThreadContextAccess::TaskOf(context);
    if (task.empty()) {
        return;
    }
    std::lock_guard<std::mutex> guard(NS_UTIL::AllTasks().lock);
    NS_UTIL::AllTasks().ids.insert(task);
}

std::size_t HugeTaskCount() {
    std::lock_guard<std::mutex> guard(NS_UTIL::AllTasks().lock);
    return NS_UTIL::AllTasks().ids.size();
}

}  // namespace qv_standalone
