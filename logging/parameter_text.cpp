#include <cstring>
#include <exception>
#include <utility>

#include "logging/corbalogutil.h"
#include "logging/logmgr.h"
#include "logging/message_type.h"
#include "logging/service_lookup.h"
#include "logging/text_end.h"
#include "orb/portability.h"
#include "platform/log_service.h"

// The bodies of operation records: parameter blocks, exceptions, reply states.

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kExceptionCorbaLine = 1121;
constexpr int kExceptionOtherLine = 1130;
constexpr int kTraceLevel = 3;
constexpr char kExceptionNotParsed[] = "}---ERROR: Exception occurred when parsing exception message!";

bool IsVerboseLog() {
    using NS_LOG_SERVICE1::LogSvcInterface;
    return ServiceLookup<LogSvcInterface>("LogSvcInterface").Get().IsVerboseLog() != 0;
}

bool IsPrinted(CORBA::ParameterMode mode, unsigned char messageType) {
    // Asked for each parameter, so that a change takes effect at once.
    const bool verbose = IsVerboseLog();
    return mode != CORBA::PARAM_OUT || (verbose && messageType != kRequestMessage);
}

}  // namespace

int CorbaLogMgr::ParseParaInfo(const Dynamic::ParameterList* params, std::string& text,
                               unsigned char messageType) {
    std::string block;
    const int result = AppendParameters(params, block, messageType);
    text = std::move(block);
    return result;
}

int CorbaLogMgr::AppendParameters(const Dynamic::ParameterList* params, std::string& text,
                                  unsigned char messageType) {
    const std::size_t begin = text.size();
    bool printedNul = false;
    text += "ParaList = {\n";
    const CORBA::ULong count = params ? params->length() : 0;
    unsigned number = 0;
    int result = 0;
    for (CORBA::ULong i = 0; i < count && result == 0; ++i) {
        const Dynamic::Parameter& parameter = (*params)[i];
        if (!IsPrinted(parameter.mode, messageType)) {
            continue;
        }
        text += "--- Parameter No.";
        text += std::to_string(++number);
        text += " = ";
        result = AppendAny(parameter.argument, text, printedNul);
        text += '\n';
    }
    text += result == 0 ? " } " : "}";
    if (printedNul) {
        CutAtNul(text, begin);
    }
    return result;
}

int CorbaLogMgr::ParseExceptionInfo(const CORBA::Any& exception, unsigned char replyStatus,
                                    std::string& text) {
    std::string built =
        replyStatus == PortableInterceptor::SYSTEM_EXCEPTION ? "SYSTEM_EXCEPTION, " : "USER_EXCEPTION, ";
    built += "ExceptList = {\n";
    try {
        std::string value;
        bool printedNul = false;
        const int result = AppendAny(exception, value, printedNul);
        if (result != 0) {
            return result;
        }
        built += "--- Exception No.1 = ";
        built += value;
        built += "\n}";
        if (printedNul) {
            CutAtNul(built);
        }
        text = std::move(built);
        return 0;
    } catch (const CORBA::Exception& ex) {
        text = built + kExceptionNotParsed;
        SetPos(kSourceFile, kExceptionCorbaLine);
        TaDebugWithPara(kTraceLevel,
                        "[CorbaLogMgr::ParseExceptionInfo] CORBA exception <%s> received when parsing "
                        "exception message!",
                        qv_orb::ExceptionText(ex).c_str());
    } catch (...) {
        text = built + kExceptionNotParsed;
        SetPos(kSourceFile, kExceptionOtherLine);
        TaDebug(kTraceLevel,
                "[CorbaLogMgr::ParseExceptionInfo] CORBA exception received when parsing exception message!");
    }
    return -1;
}

std::string CorbaLogMgr::ParseReplyState(short status) {
    switch (status) {
        case PortableInterceptor::SUCCESSFUL:
            return "ReplyStatus = SUCCESSFUL!\n";
        case PortableInterceptor::SYSTEM_EXCEPTION:
            return "ReplyStatus = SYSTEM_EXCEPTION!\n";
        case PortableInterceptor::USER_EXCEPTION:
            return "ReplyStatus = USER_EXCEPTION!\n";
        case PortableInterceptor::LOCATION_FORWARD:
            return "ReplyStatus = LOCATION_FORWARD!\n";
        case PortableInterceptor::TRANSPORT_RETRY:
            return "ReplyStatus = TRANSPORT_RETRY!\n";
        default:
            return "ReplyStatus = UNKNOWN!";
    }
}

int CorbaLogMgr::ParseObjRef() {
    return 0;
}

}  // namespace NS_CORBA
