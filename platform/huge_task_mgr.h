#pragma once

#include "platform/export.h"

namespace NS_UTIL {

class ThreadContextInfo;

/// The process's huge tasks: long requests of which the platform keeps a record. Any thread may call any
/// operation. What an operation raises comes out of the interception point that ends the request.
class QV_API HugeTaskMgr {
  public:
    HugeTaskMgr(const HugeTaskMgr&) = delete;
    HugeTaskMgr& operator=(const HugeTaskMgr&) = delete;

    /// The only instance, never null, owned by the library.
    static HugeTaskMgr* Instance();

    /// True when the calling thread is running a synchronous huge task.
    bool IsSynHTsk();

    /// Forgets the huge task of that context; without effect when there is none.
    void RemoveHTskInfo(const ThreadContextInfo& context);

  private:
    HugeTaskMgr();
    ~HugeTaskMgr();
};

}  // namespace NS_UTIL
