#pragma once

#include <string>

#include "platform/export.h"
#include "platform/service_interface.h"

/// The platform's log service. Where the texts go, in which form, and what becomes of the level is the
/// service's affair. The order of the virtual operations is part of the interface.
namespace NS_LOG_SERVICE1 {

/// One open log category. Owned by the log service that opened it.
/// Thread safety: both operations may be called from any thread at once. Errors: either may raise, when a
/// record can't be written; the log functions pass that on to whoever logs, but for the threads of the
/// library and what serves a request, which lose the record and go on.
class QV_API LogHandle {
  public:
    virtual ~LogHandle() = default;

    /// Writes one record. `file`, `function` and `line` are the source position; `level` is a plain integer,
    /// where 0 is the gravest and -1 marks a record without a level.
    virtual void Write(const std::string& file, const std::string& function, int line, int level,
                       const std::string& text) = 0;

    /// As Write, with the text given as a `printf` format and its arguments.
    virtual void WriteFormat(const std::string& file, const std::string& function, int line, int level,
                             const char* format, ...) __attribute__((format(printf, 6, 7))) = 0;
};

/// The log service, found by the name "LogSvcInterface". Thread safety: any thread may call any operation.
/// Errors: what an operation raises passes to whoever opens the channels or makes a record.
class QV_API LogSvcInterface : public NS_BUNDLEMGR1::ServiceInterface {
  public:
    /// Opens a category on behalf of a module of a bundle. The handle stays the service's and lives as long
    /// as it; null when the category can't be opened. Opening a category again is allowed.
    virtual LogHandle* OpenLog(const std::string& bundle, const std::string& module,
                               const std::string& category) = 0;

    /// Not 0 when records shall hold what an operation gave back beside what it was called with.
    virtual int IsVerboseLog() = 0;
};

}  // namespace NS_LOG_SERVICE1
