#include "logging/log_records.h"

#include <utility>

#include "logging/message_type.h"

namespace NS_CORBA {

namespace {

constexpr int kNoLevel = -1;

const char* MessageTypeWord(std::uint8_t messageType) {
    switch (messageType) {
        case kRequestMessage:
            return "REQUEST";
        case kReplyMessage:
            return "REPLY";
        case kExceptionMessage:
            return "EXCEPTION";
        default:
            return "OTHER";
    }
}

}  // namespace

std::string RecordHead(const TALogRecord& record) {
    std::string head;
    AppendRecordHead(head, record);
    return head;
}

void AppendRecordHead(std::string& out, const TALogRecord& record) {
    out += "---MessageType:  ";
    out += MessageTypeWord(record.messageType);
    out += ", RemoteAddress:  ";
    out += record.remoteAddress;
    out += "\n--- Request ID = ";
    out += std::to_string(record.requestId);
    out += ", Operation Name = ";
    out += record.operationName;
    out += '\n';
}

int LogFormatter<TADebugRecord>::operator()(std::string& out, TADebugRecord&& record) const {
    out = std::move(record.text);
    return record.level;
}

int LogFormatter<std::string>::operator()(std::string& out, std::string&& record) const {
    out = std::move(record);
    return kNoLevel;
}

int LogFormatter<TALogRecord>::operator()(std::string& out, TALogRecord&& record) const {
    out = RecordHead(record) + record.paramInfo;
    return kNoLevel;
}

}  // namespace NS_CORBA
