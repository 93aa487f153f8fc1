#pragma once

#include <cstddef>
#include <string>

#include "platform/export.h"
#include "platform/thread_context.h"

/// What only the stand-alone platform offers: filling thread contexts and the table of huge tasks. Programs
/// that must also run on an EMS host don't use it. Thread safety: any thread may call any operation.
namespace qv_standalone {

/// Begins a new task on the calling thread: from now on its context holds these texts. `userInfo` has the
/// form
/// "[user][address]".
QV_API void SetThreadContext(const std::string& userInfo, const std::string& interfaceName);

/// Ends the calling thread's task: its context is empty again.
QV_API void ClearThreadContext();

/// Records the task of `context` as a synchronous huge task; without effect for an empty context. It stays
/// recorded until HugeTaskMgr::RemoveHTskInfo.
QV_API void RegisterSynHugeTask(const NS_UTIL::ThreadContextInfo& context);

/// The number of huge tasks on record.
QV_API std::size_t HugeTaskCount();

}  // namespace qv_standalone
