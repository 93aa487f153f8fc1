#include "logging/log_records.h"

namespace NS_CORBA {

namespace {

constexpr int kNoLevel = -1;

const char* MessageTypeWord(std::uint8_t messageType) {
    switch (messageType) {
        case 0:
            return "REQUEST";
        case 1:
            return "REPLY";
        case 2:
            return "EXCEPTION";
        default:
            return "OTHER";
    }
}

}  // namespace

int LogFormatter<TADebugRecord>::operator()(std::ostream& out, const TADebugRecord& record) const {
    out << record.text;
    return record.level;
}

int LogFormatter<std::string>::operator()(std::ostream& out, const std::string& record) const {
    out << record;
    return kNoLevel;
}

int LogFormatter<TALogRecord>::operator()(std::ostream& out, const TALogRecord& record) const {
    out << "---MessageType:  " << MessageTypeWord(record.messageType)
        << ", RemoteAddress:  " << record.remoteAddress << '\n';
    // By to_string, so that the process's locale can't put separators into the number.
    out << "--- Request ID = " << std::to_string(record.requestId)
        << ", Operation Name = " << record.operationName << '\n';
    out << record.paramInfo;
    return kNoLevel;
}

}  // namespace NS_CORBA
