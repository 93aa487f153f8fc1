#pragma once

#include <ace/TSS_T.h>
#include <tao/PI_Server/PI_Server.h>

#include <sstream>
#include <string>
#include <string_view>

#include "logging/pos_for_dbg.h"
#include "platform/export.h"

namespace CosNotification {
struct StructuredEvent;
}

/// @file
/// The free log functions: what every source of the library, and every agent bundle, logs through.
///
/// All of them may be called from any thread at any time and none of them reports anything: while the log
/// manager has not opened a channel, what is written to that channel is dropped. An exception of the
/// platform's log handle passes to the caller. Set the position first: `TA_POS; TaDebug(3, "...");`.
namespace NS_CORBA {

/// The store of positions, one PosForDbg per thread: `(*GetTss())->line`. Owned by the log manager; null only
/// when the log manager could not be created.
QV_API ACE_TSS<PosForDbg>* GetTss();

/// Sets the calling thread's position to `file`, "unknown", `line`. Does nothing when there is no record to
/// be had.
QV_API void SetPos(std::string_view file, int line);

/// The name of a source file without its directories and its extension.
constexpr std::string_view SourceBaseName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash != std::string_view::npos) {
        path.remove_prefix(slash + 1);
    }
    return path.substr(0, path.rfind('.'));
}

/// Writes to the system channel at level -1. A result of more than 4,095 characters is written as an empty
/// record.
QV_API void TaTrace(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes `text` as it stands, of any length, to the debug channel.
QV_API void TaDebug(int level, const char* text);

/// Writes to the debug channel. A result of more than 4,095 characters is written as an empty record.
QV_API void TaDebugWithPara(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Writes "Exception: ", `text`, "==>" and the ORB's description of `ex` to the debug channel at level 1.
QV_API void TaException(CORBA::Exception& ex, const char* text);

/// Writes the operation record of a request.
/// @param messageType 0 for a request, 1 for a reply, 2 for an exception
QV_API void TaWriteOperLog(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType);

/// Writes the record of an event to the notification channel at level -1 when notifications are logged.
QV_API void TaWriteNotifyLog(const CosNotification::StructuredEvent& event);

/// Writes `text` to the notification channel at level -1 when notifications are logged.
QV_API void TaWriteAlarmNotifyLog(const std::stringstream& text);

/// Writes `text` to the alarm channel at level -1 when alarms are logged.
QV_API void TaWriteAlarmLog(const std::stringstream& text);

/// Writes `value`, printed as in the other records, and a line end to the debug channel.
QV_API void TaWriteTmfLog(int level, const CORBA::Any& value);

/// Traces entry and exit of a function to the debug channel at level 3. Declare one as the function's first
/// statement.
class QV_API FuncGuardTrace {
  public:
    /// @param function the name to trace; a null pointer raises std::logic_error
    explicit FuncGuardTrace(const char* function);
    /// Raises nothing, whatever the log does: it may run while another exception is on its way.
    ~FuncGuardTrace();

    FuncGuardTrace(const FuncGuardTrace&) = delete;
    FuncGuardTrace& operator=(const FuncGuardTrace&) = delete;

  private:
    std::string m_function;
};

}  // namespace NS_CORBA

/// Sets the calling thread's position to this source line.
#define TA_POS ::NS_CORBA::SetPos(::NS_CORBA::SourceBaseName(__FILE__), __LINE__)
