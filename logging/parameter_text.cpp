#include <functional>
#include <utility>

#include "logging/corbalogutil.h"
#include "logging/logmgr.h"
#include "logging/message_type.h"
#include "logging/parameter_source.h"
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

using LogServiceLookup = ServiceLookup<NS_LOG_SERVICE1::LogSvcInterface>;

bool IsPrinted(LogServiceLookup& logService, CORBA::ParameterMode mode, unsigned char messageType) {
    // Asked for each parameter, so that a change takes effect at once.
    const bool verbose = logService.Get().IsVerboseLog() != 0;
    return mode != CORBA::PARAM_OUT || (verbose && messageType != kRequestMessage);
}

/// The parameters of a list of Anys; null counts as an empty one.
class ListSource final : public ParameterSource {
  public:
    using Printer = std::function<int(const CORBA::Any&, std::string&, bool& printedNul)>;

    ListSource(const Dynamic::ParameterList* list, Printer print) : m_list(list), m_print(std::move(print)) {}

    std::size_t count() const override { return m_list ? m_list->length() : 0; }
    CORBA::ParameterMode mode(std::size_t parameter) const override { return At(parameter).mode; }
    int Append(std::size_t parameter, std::string& text, bool& printedNul) override {
        return m_print(At(parameter).argument, text, printedNul);
    }
    void Skip(std::size_t) override {}

  private:
    const Dynamic::Parameter& At(std::size_t parameter) const {
        return (*m_list)[static_cast<CORBA::ULong>(parameter)];
    }

    const Dynamic::ParameterList* const m_list;
    const Printer m_print;
};

}  // namespace

int CorbaLogMgr::ParseParaInfo(const Dynamic::ParameterList* params, std::string& text,
                               unsigned char messageType) {
    std::string block;
    ListSource source(params, [this](const CORBA::Any& value, std::string& out, bool& printedNul) {
        return AppendAny(value, out, printedNul);
    });
    const int result = AppendParameters(source, block, messageType);
    text = std::move(block);
    return result;
}

int CorbaLogMgr::AppendParameters(ParameterSource& source, std::string& text, unsigned char messageType) {
    const std::size_t begin = text.size();
    bool printedNul = false;
    text += "ParaList = {\n";
    unsigned number = 0;
    int result = 0;
    LogServiceLookup logService("LogSvcInterface");
    for (std::size_t i = 0; i < source.count() && result == 0; ++i) {
        if (!IsPrinted(logService, source.mode(i), messageType)) {
            source.Skip(i);
            continue;
        }
        text += "--- Parameter No.";
        text += std::to_string(++number);
        text += " = ";
        result = source.Append(i, text, printedNul);
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
