#include "standalone/span_line.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <limits>

#include "tests/support/sample_span.h"

using qv_standalone::AppendCompact;

namespace {

std::string ByLibrary(const Json::Value& value) {
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    return Json::writeString(compact, value);
}

void ExpectSame(const Json::Value& value) {
    std::string line;
    EXPECT_TRUE(AppendCompact(value, line));
    EXPECT_EQ(line, ByLibrary(value));
}

Json::Value Nested(int depth) {
    Json::Value value = "core";
    for (int i = 0; i < depth; ++i) {
        Json::Value outer(Json::arrayValue);
        outer.append(value);
        value = outer;
    }
    return value;
}

}  // namespace

TEST(SpanLine, ASpanIsOneLineWithItsKeysInOrder) {
    std::string line = "before ";
    EXPECT_TRUE(AppendCompact(qv_test::SampleSpan(), line));
    EXPECT_EQ(
        line,
        "before "
        R"({"annotations":[{"host":{"ip":"10.0.0.1","port":"4711"},"timestamp":1700000000123,"value":"sr"},)"
        R"({"host":{"ip":"10.0.0.1","port":"4711"},"timestamp":1700000000128,"value":"ss"}],)"
        R"("append":[{"annotationType":"i4","key":"type","value":"9"},)"
        R"({"annotationType":"STRING","key":"append","value":"POST"},)"
        R"({"annotationType":"i4","key":"async","value":"1"},)"
        R"({"annotationType":"i4","key":"result","value":"0"},)"
        R"({"annotationType":"i4","key":"resultCode","value":"200"}],)"
        R"("id":"00000000000000b2","name":"nbi:corba_agent-7-2:/rest/mrb/v1/corba/:getAllEMSAndMESystemAlarms",)"
        R"("parentId":"0","traceId":"00000000000000a1"})");
}

TEST(SpanLine, EveryKindOfValueStandsAsJsoncppHasIt) {
    Json::Value value;
    value["null"] = Json::Value();
    value["yes"] = true;
    value["no"] = false;
    value["smallest"] = std::numeric_limits<Json::Int64>::min();
    value["largest"] = std::numeric_limits<Json::UInt64>::max();
    value["real"] = 0.1;
    value["nan"] = std::numeric_limits<double>::quiet_NaN();
    value["infinity"] = std::numeric_limits<double>::infinity();
    value["empty text"] = "";
    value["no elements"] = Json::Value(Json::arrayValue);
    value["no members"] = Json::Value(Json::objectValue);
    value["list"].append(1);
    value["list"].append("two");
    ExpectSame(value);
    ExpectSame(Json::Value());
    ExpectSame(qv_test::SampleSpan());
}

TEST(SpanLine, TextsAndNamesThatNeedCareStandAsJsoncppHasThem) {
    using namespace std::string_literals;
    for (const std::string& text :
         {"\"quoted\""s, "back\\slash"s, "line\nend\r\t"s, "nul\0inside"s, "\x01\x7f"s,
          "Z\xc3\xbcrich \xe2\x82\xac \xf0\x9f\x98\x80"s, "broken \xc3 \xff utf"s}) {
        Json::Value value;
        value[text] = text;
        ExpectSame(value);
        std::string line;
        AppendCompact(value, line);
        EXPECT_EQ(line.find('\n'), std::string::npos);
    }
}

TEST(SpanLine, WhatIsNestedTooDeepIsRefused) {
    ExpectSame(Nested(63));
    std::string line;
    EXPECT_FALSE(AppendCompact(Nested(64), line));
    EXPECT_FALSE(AppendCompact(Nested(900), line));
}
