#pragma once

#include <string>

#include "platform/thread_context.h"

namespace NS_UTIL {

/// What a context that isn't empty holds.
struct ThreadContextInfo::Data {
    std::string task;  ///< id of the task, unique in the process
    std::string user_info;
    std::string interface_name;
};

struct ThreadContextAccess {
    static ThreadContextInfo Make(ThreadContextInfo::Data data);

    /// The id of the context's task; empty for an empty context.
    static std::string TaskOf(const ThreadContextInfo& context);
};

/// The calling thread's own context.
ThreadContextInfo& CurrentThreadContext();

}  // namespace NS_UTIL
