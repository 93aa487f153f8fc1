#include <cstring>

#include "logging/log_writer.h"
#include "logging/logmgr.h"
#include "logging/record_stamp.h"
#include "platform/secure_string.h"

namespace NS_CORBA {

namespace {

constexpr int kNoLevel = -1;
constexpr std::size_t kTextBufferSize = 4096;

/// Formats into `buffer`; a text that doesn't fit, or a format that fails, gives an empty text and not a cut
/// one.
const char* FormatText(char (&buffer)[kTextBufferSize], const char* format, std::va_list& args) {
    std::memset(buffer, 0, kTextBufferSize);
    if (vsnprintf_s(buffer, kTextBufferSize, kTextBufferSize - 1, format, args) < 0) {
        return "";
    }
    return buffer;
}

}  // namespace

void CorbaLogMgr::TATrace(const char* format, std::va_list& args) {
    char buffer[kTextBufferSize];
    m_pSysLog->Write(FormatText(buffer, format, args));
}

void CorbaLogMgr::TADebug(int level, const char* text) {
    WriteDebugRecord(level, text);
}

void CorbaLogMgr::TADebug(int level, const char* format, std::va_list& args) {
    char buffer[kTextBufferSize];
    WriteDebugRecord(level, FormatText(buffer, format, args));
}

void CorbaLogMgr::WriteDebugRecord(int level, const char* text) {
    TADebugRecord record;
    record.threadId = RecordThreadId();
    record.level = level;
    record.text = text ? text : "";
    record.time = RecordTime();
    m_pDebugLog->Write(record);
}

void CorbaLogMgr::WriteAlarmNotifyLog(const std::stringstream& text) {
    if (!m_bLogNotify || !m_pNotifyLog) {
        return;
    }
    m_pNotifyLog->WriteText(kNoLevel, text.str());
}

void CorbaLogMgr::WriteAlarmLog(const std::stringstream& text) {
    if (!m_bLogAlarm || !m_pAlarmLog) {
        return;
    }
    m_pAlarmLog->WriteText(kNoLevel, text.str());
}

}  // namespace NS_CORBA
