#pragma once

#include <json/value.h>

#include <string>

namespace qv_test {

/// A span as the library reports it.
inline Json::Value SampleSpan(const std::string& trace = "00000000000000a1",
                              Json::Int64 begin = 1700000000123, Json::Int64 end = 1700000000128,
                              const std::string& ip = "10.0.0.1", const std::string& port = "4711",
                              const std::string& result = "200",
                              const std::string& operation = "getAllEMSAndMESystemAlarms") {
    const auto annotation = [&](const char* kind, Json::Int64 time) {
        Json::Value value;
        value["host"]["ip"] = ip;
        value["host"]["port"] = port;
        value["value"] = kind;
        value["timestamp"] = time;
        return value;
    };
    Json::Value span;
    span["annotations"].append(annotation("sr", begin));
    span["annotations"].append(annotation("ss", end));
    const char* const entries[][3] = {{"type", "9", "i4"},
                                      {"append", "POST", "STRING"},
                                      {"async", "1", "i4"},
                                      {"result", "0", "i4"},
                                      {"resultCode", result.c_str(), "i4"}};
    for (const auto& [key, value, type] : entries) {
        Json::Value entry;
        entry["key"] = key;
        entry["value"] = value;
        entry["annotationType"] = type;
        span["append"].append(entry);
    }
    span["id"] = "00000000000000b2";
    span["name"] = "nbi:corba_agent-7-2:/rest/mrb/v1/corba/:" + operation;
    span["parentId"] = "0";
    span["traceId"] = trace;
    return span;
}

}  // namespace qv_test
