#pragma once

#include <string>
#include <utility>

#include "logging/log_records.h"
#include "logging/logmgr.h"
#include "logging/text_end.h"
#include "platform/log_service.h"

namespace NS_CORBA {

/// One log channel for records of one type: the platform's handle, and how a record is written out.
///
/// While the handle is null every write is dropped. Writes may come from any thread at once; Open() must come
/// before them. What the handle raises passes to the caller.
template <class Record>
class LogWriter {
  public:
    /// Takes the channel's handle, which stays the log service's; null closes the channel.
    void Open(NS_LOG_SERVICE1::LogHandle* handle) noexcept { m_handle = handle; }

    bool IsOpen() const noexcept { return m_handle != nullptr; }

    /// Formats `record` and writes it at the level that its layout gives.
    void Write(Record record) const {
        if (!m_handle) {
            return;
        }
        std::string text;
        const int level = m_formatter(text, std::move(record));
        WriteText(level, std::move(text));
    }

    /// Writes `text` up to its first NUL, with the calling thread's position.
    void WriteText(int level, std::string text) const {
        CutAtNul(text);
        WriteWhole(level, text);
    }

    /// Writes a text that is known to hold no NUL.
    void WriteWhole(int level, const std::string& text) const {
        if (!m_handle) {
            return;
        }
        const PosForDbg* const position = CurrentPosition();
        const PosForDbg& where = position ? *position : NoPosition();
        m_handle->Write(where.file, where.function, where.line, level, text);
    }

  private:
    static const PosForDbg* CurrentPosition() {
        CorbaLogMgr* const manager = CorbaLogMgr::Instance();
        return manager ? static_cast<const PosForDbg*>(*manager) : nullptr;
    }

    static const PosForDbg& NoPosition() {
        static const PosForDbg none;
        return none;
    }

    NS_LOG_SERVICE1::LogHandle* m_handle = nullptr;
    LogFormatter<Record> m_formatter;
};

}  // namespace NS_CORBA
