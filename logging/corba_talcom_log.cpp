#include "logging/corba_talcom_log.h"

#include <chrono>
#include <unordered_map>

#include "logging/corbalogutil.h"
#include "logging/message_type.h"
#include "platform/call_chain.h"
#include "platform/self_util_common.h"
#include "platform/thread_context.h"
#include "request/te_user_helper.h"

namespace NS_CORBA {

namespace {

using Json::StaticString;  // neither names nor fixed values are copied into the span

constexpr char kSourceFile[] = "corba_talcom_log";
constexpr int kUnknownTraceLine = 77;
constexpr int kNoIdLine = 164;
constexpr int kIdsRefusedLine = 170;
constexpr int kDebugLevel = 3;

constexpr char kSucceeded[] = "200";
constexpr char kFailed[] = "500";

/// When the spans of the calling thread were opened, by trace id, in milliseconds since the epoch. A request
/// that ends in a forward leaves its entry behind.
thread_local std::unordered_map<std::string, long> TraceId2TimeMap;

xDENcommon::xDENCallChainInst* CallChain() {
    return xDENcommon::xDENCallChainInstMgr::Instance("MRB");
}

long Milliseconds() {
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    return now.count() / 1000000;
}

/// The text from "address:port" between the tags in the caller's name as {"ip", "port"}, both empty when
/// there is none.
Json::Value CallerHost() {
    static const std::string kBegin = "<IPANDPORT_TAG>";
    static const std::string kEnd = "</IPANDPORT_TAG>";
    const std::string address = NS_UTIL::SelfUtilCommon::Instance()->GetValByTag(
        TEUserHelper::GetNmsIPAddrByContext(), kBegin, kEnd, static_cast<int>(kBegin.size()));
    const std::size_t colon = address.find(':');
    const bool found = colon != std::string::npos;
    Json::Value host;
    host[StaticString("ip")] = found ? address.substr(0, colon) : "";
    host[StaticString("port")] = found ? address.substr(colon + 1) : "";
    return host;
}

Json::Value Annotation(Json::Value host, const StaticString& value, long time) {
    Json::Value annotation;
    annotation[StaticString("host")].swap(host);
    annotation[StaticString("value")] = value;
    annotation[StaticString("timestamp")] = static_cast<Json::Int64>(time);
    return annotation;
}

Json::Value Entry(const StaticString& key, Json::Value value, const StaticString& type) {
    Json::Value entry;
    entry[StaticString("key")] = key;
    entry[StaticString("value")].swap(value);
    entry[StaticString("annotationType")] = type;
    return entry;
}

Json::Value CallProperties(const std::string& resultCode) {
    const StaticString number("i4");
    Json::Value properties(Json::arrayValue);
    properties.append(Entry(StaticString("type"), StaticString("9"), number));
    properties.append(Entry(StaticString("append"), StaticString("POST"), StaticString("STRING")));
    properties.append(Entry(StaticString("async"), StaticString("1"), number));
    properties.append(Entry(StaticString("result"), StaticString("0"), number));
    properties.append(Entry(StaticString("resultCode"), resultCode, number));
    return properties;
}

/// The environment is read anew for each span.
std::string SpanName(const std::string& interfaceName) {
    using NS_UTIL::SelfUtilCommon;
    std::string name = SelfUtilCommon::getEnvValue("APP_NAME");
    name += ':';
    name += SelfUtilCommon::getEnvValue("PROCESS_NAME");
    name += '-';
    name += SelfUtilCommon::getEnvValue("NODE_ID");
    name += '-';
    name += SelfUtilCommon::getEnvValue("PROCESS_SLOT");
    name += ":/rest/mrb/v1/corba/:";
    name += interfaceName;
    return name;
}

/// When the span was opened, which is forgotten; now, with a line in the log, when that isn't known.
long TakeStart(const std::string& traceId) {
    const auto opened = TraceId2TimeMap.find(traceId);
    if (opened != TraceId2TimeMap.end()) {
        const long start = opened->second;
        TraceId2TimeMap.erase(opened);
        return start;
    }
    const long now = Milliseconds();
    SetPos(kSourceFile, kUnknownTraceLine);
    TaDebugWithPara(kDebugLevel, "MakeSpanInfo: traceID : %s is not in the TraceId2TimeMap %s.",
                    traceId.c_str(), "");
    return now;
}

void ReportSpan(PortableInterceptor::ServerRequestInfo* info) {
    xDENcommon::xDENCallChainInst* const chain = CallChain();
    if (!chain || !info) {
        return;
    }
    const std::string interfaceName =
        NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext().GetInterfaceName();
    const bool succeeded = info->reply_status() == PortableInterceptor::SUCCESSFUL;
    const Json::Value span = MakeSpan(interfaceName, succeeded ? kSucceeded : kFailed);
    if (!span.empty()) {
        chain->ReportSpan(span, Json::Value(Json::nullValue));
    }
}

}  // namespace

void WriteCallChain(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType) {
    switch (messageType) {
        case kRequestMessage:
            SetOriginCallChain();
            break;
        case kReplyMessage:
        case kExceptionMessage:
            ReportSpan(info);
            break;
        default:
            break;
    }
}

void SetOriginCallChain() {
    xDENcommon::xDENCallChainInst* const chain = CallChain();
    if (!chain) {
        return;
    }
    const std::string traceId = xDENcommon::xDENCallChainHelper::GenerateCCUUID();
    const std::string spanId = xDENcommon::xDENCallChainHelper::GenerateCCUUID();
    if (traceId.empty() || spanId.empty()) {
        SetPos(kSourceFile, kNoIdLine);
        TaDebug(kDebugLevel, "traceID or spanID is empty.");
        return;
    }
    if (chain->SetCallChainInfo(traceId, "0", spanId) != 0) {
        SetPos(kSourceFile, kIdsRefusedLine);
        TaDebug(kDebugLevel, "SetOriginCallChain SetCallChainInfo failed.");
    }
    TraceId2TimeMap.emplace(traceId, Milliseconds());
}

Json::Value MakeSpan(const std::string& interfaceName, const std::string& resultCode) {
    Json::Value span;
    xDENcommon::xDENCallChainInst* const chain = CallChain();
    if (!chain) {
        return span;
    }
    const std::string traceId = chain->GetTraceId();
    const std::string spanId = chain->GetSpanId();
    const std::string parentId = chain->GetParentId();
    span[StaticString("annotations")] = MakeSpanInfo(traceId);
    span[StaticString("append")] = CallProperties(resultCode);
    span[StaticString("id")] = spanId;
    span[StaticString("name")] = SpanName(interfaceName);
    span[StaticString("parentId")] = parentId;
    span[StaticString("traceId")] = traceId;
    return span;
}

Json::Value MakeSpanInfo(const std::string& traceId) {
    const Json::Value host = CallerHost();
    const long start = TakeStart(traceId);
    Json::Value annotations(Json::arrayValue);
    annotations.append(Annotation(host, StaticString("sr"), start));
    annotations.append(Annotation(host, StaticString("ss"), Milliseconds()));
    return annotations;
}

}  // namespace NS_CORBA
