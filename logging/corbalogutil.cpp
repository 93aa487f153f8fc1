#include "logging/corbalogutil.h"

#include <cstdarg>

#include "logging/logmgr.h"
#include "orb/portability.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "corbalogutil";
constexpr int kEnterLine = 167;
constexpr int kLeaveLine = 174;
constexpr int kTraceLevel = 3;
constexpr int kExceptionLevel = 1;

}  // namespace

ACE_TSS<PosForDbg>* GetTss() {
    return CorbaLogMgr::Instance();
}

void SetPos(std::string_view file, int line) {
    const ACE_TSS<PosForDbg>* const store = GetTss();
    PosForDbg* const position = store ? static_cast<PosForDbg*>(*store) : nullptr;
    if (!position) {
        return;
    }
    position->file = file;
    position->function = "unknown";
    position->line = line;
}

void TaTrace(const char* format, ...) {
    CorbaLogMgr* const manager = CorbaLogMgr::Instance();
    if (!manager) {
        return;
    }
    std::va_list args;
    va_start(args, format);
    manager->TATrace(format, args);
    va_end(args);
}

void TaDebug(int level, const char* text) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->TADebug(level, text);
    }
}

void TaDebugWithPara(int level, const char* format, ...) {
    CorbaLogMgr* const manager = CorbaLogMgr::Instance();
    if (!manager) {
        return;
    }
    std::va_list args;
    va_start(args, format);
    manager->TADebug(level, format, args);
    va_end(args);
}

void TaException(CORBA::Exception& ex, const char* text) {
    std::string line = "Exception: ";
    line += text ? text : "";
    line += "==>";
    line += qv_orb::ExceptionText(ex).c_str();
    TaDebug(kExceptionLevel, line.c_str());
}

void TaWriteOperLog(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->WriteOperRecord(info, messageType);
    }
}

void TaWriteNotifyLog(const CosNotification::StructuredEvent& event) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->WriteNotifyLog(event);
    }
}

void TaWriteAlarmNotifyLog(const std::stringstream& text) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->WriteAlarmNotifyLog(text);
    }
}

void TaWriteAlarmLog(const std::stringstream& text) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->WriteAlarmLog(text);
    }
}

void TaWriteTmfLog(int level, const CORBA::Any& value) {
    if (CorbaLogMgr* const manager = CorbaLogMgr::Instance()) {
        manager->WriteTmfLog(level, value);
    }
}

FuncGuardTrace::FuncGuardTrace(const char* function) : m_function(function) {
    SetPos(kSourceFile, kEnterLine);
    TaDebug(kTraceLevel, ("===[" + m_function + "] Entering...").c_str());
}

FuncGuardTrace::~FuncGuardTrace() {
    try {
        SetPos(kSourceFile, kLeaveLine);
        TaDebug(kTraceLevel, ("===[" + m_function + "] Leaved!").c_str());
    } catch (...) {
        // A trace line is never worth the exception that may be on its way through here.
        return;
    }
}

}  // namespace NS_CORBA
