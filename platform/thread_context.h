#pragma once

#include <string>

#include "platform/export.h"

namespace NS_UTIL {

/// What the platform knows of the task that a thread is running: a value. A copy is independent of its
/// origin. Thread safety: as a string's; one object isn't shared between threads without a lock.
class QV_API ThreadContextInfo {
  public:
    /// An empty context, or one with what `other` holds; moved from, `other` is empty.
    /// @{
    ThreadContextInfo();
    ThreadContextInfo(const ThreadContextInfo& other);
    ThreadContextInfo(ThreadContextInfo&& other) noexcept;
    ThreadContextInfo& operator=(const ThreadContextInfo& other);
    ThreadContextInfo& operator=(ThreadContextInfo&& other) noexcept;
    /// @}
    ~ThreadContextInfo();

    /// A new unique text on each call, on any thread.
    static std::string GenerateUUID();

    /// User and address of the task as "[user][address]"; empty when there is none.
    std::string GetUserInfo() const;

    /// The interface name of the running request; empty when there is none.
    std::string GetInterfaceName() const;

  private:
    friend struct ThreadContextAccess;  // the implementation's own way to fill a context
    struct Data;
    Data* m_data;  // the only member, so that the size doesn't depend on the implementation; null for an
                   // empty context
};

/// Hands out the calling thread's context.
class QV_API ThreadContextMgr {
  public:
    ThreadContextMgr(const ThreadContextMgr&) = delete;
    ThreadContextMgr& operator=(const ThreadContextMgr&) = delete;

    /// The only instance, never null, owned by the library.
    static ThreadContextMgr* Instance();

    /// A copy of the calling thread's context; an empty one when the thread runs no task.
    ThreadContextInfo GetThreadContext();

  private:
    ThreadContextMgr();
    ~ThreadContextMgr();
};

}  // namespace NS_UTIL
