#pragma once

#include <ace/Time_Value.h>

#include <cstdint>
#include <string>

namespace NS_CORBA {

/// One line of the debug channel.
struct TADebugRecord {
    ACE_Time_Value time;        ///< wall-clock time of the log call
    std::int32_t threadId = 0;  ///< low 32 bits of the thread's id
    std::int32_t level = 0;     ///< what the caller gave, for the log service to judge by
    std::string text;
};

/// One event in the life of a request, for the operation channel.
struct TALogRecord {
    ACE_Time_Value time;  ///< wall-clock time of the event
    std::uint64_t requestId = 0;
    std::int32_t threadId = 0;  ///< low 32 bits of the thread's id
    std::string operationName;
    std::string paramInfo;         ///< the body of the record
    std::string remoteAddress;     ///< who called
    std::uint8_t messageType = 0;  ///< a MessageType, or another value for any other message
};

/// One event that leaves the agent, for the notification channel.
struct TANotifyRecord {
    ACE_Time_Value time;         ///< wall-clock time of the record
    std::int32_t threadId = 0;   ///< low 32 bits of the thread's id
    std::string notificationId;  ///< the value of the event's first filterable field
    std::string eventType;
    std::string eventInfo;  ///< the printed event
};

/// What stands above the body of an operation record: type, caller, id and operation, in two lines.
std::string RecordHead(const TALogRecord& record);

/// Appends RecordHead of `record` to `out`.
void AppendRecordHead(std::string& out, const TALogRecord& record);

/// Turns a record into text. A specialisation's operator() makes `out` the record's text, taking what it can
/// of the record, and returns the level to log it at. The primary template stands for records that have no
/// layout: they are written as plain text.
template <class Record>
struct LogFormatter {};

template <>
struct LogFormatter<TADebugRecord> {
    int operator()(std::string& out, TADebugRecord&& record) const;
};

template <>
struct LogFormatter<std::string> {
    int operator()(std::string& out, std::string&& record) const;
};

template <>
struct LogFormatter<TALogRecord> {
    int operator()(std::string& out, TALogRecord&& record) const;
};

template <>
struct LogFormatter<TANotifyRecord> {
    int operator()(std::string& out, TANotifyRecord&& record) const;
};

}  // namespace NS_CORBA
