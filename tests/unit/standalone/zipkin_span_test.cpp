#include "standalone/zipkin_span.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include "tests/support/sample_span.h"

using qv_standalone::ZipkinSpan;
using qv_test::SampleSpan;

namespace {

std::string Compact(const Json::Value& value) {
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    return Json::writeString(compact, value);
}

std::string Remote(const std::string& ip, const std::string& port) {
    const Json::Value zipkin = ZipkinSpan(SampleSpan("00000000000000a1", 1, 2, ip, port), "mrb");
    return zipkin.isMember("remoteEndpoint") ? Compact(zipkin["remoteEndpoint"]) : "none";
}

std::string Service(const std::string& name) {
    Json::Value span = SampleSpan();
    span["name"] = name;
    return ZipkinSpan(span, "MRB")["localEndpoint"]["serviceName"].asString();
}

}  // namespace

TEST(ZipkinSpan, HoldsWhatACollectorReads) {
    EXPECT_EQ(Compact(ZipkinSpan(SampleSpan(), "mrb")),
              R"({"duration":5000,"id":"00000000000000b2","kind":"SERVER",)"
              R"("localEndpoint":{"serviceName":"nbi:corba_agent-7-2"},)"
              R"("name":"nbi:corba_agent-7-2:/rest/mrb/v1/corba/:getAllEMSAndMESystemAlarms",)"
              R"("remoteEndpoint":{"ipv4":"10.0.0.1","port":4711},)"
              R"("tags":{"append":"POST","async":"1","result":"0","resultCode":"200","type":"9"},)"
              R"("timestamp":1700000000123000,"traceId":"00000000000000a1"})");
}

TEST(ZipkinSpan, AFailedCallHasATagThatSaysSo) {
    const Json::Value zipkin = ZipkinSpan(SampleSpan("00000000000000a1", 1, 2, "", "", "500"), "mrb");
    EXPECT_EQ(zipkin["tags"]["error"].asString(), "500");
    EXPECT_FALSE(ZipkinSpan(SampleSpan(), "mrb")["tags"].isMember("error"));
}

TEST(ZipkinSpan, LastsAMicrosecondAtLeast) {
    EXPECT_EQ(ZipkinSpan(SampleSpan("00000000000000a1", 7, 7), "mrb")["duration"].asInt(), 1);
    EXPECT_EQ(ZipkinSpan(SampleSpan("00000000000000a1", 7, 3), "mrb")["duration"].asInt(), 1)
        << "a clock that was set back";
}

TEST(ZipkinSpan, AParentIsNamedUnlessThereIsNone) {
    Json::Value span = SampleSpan();
    EXPECT_FALSE(ZipkinSpan(span, "mrb").isMember("parentId"));
    span["parentId"] = "00000000000000C3";
    EXPECT_EQ(ZipkinSpan(span, "mrb")["parentId"].asString(), "00000000000000c3");
}

TEST(ZipkinSpan, TheCallerIsNamedWhereItsAddressIsOne) {
    EXPECT_EQ(Remote("10.0.0.1", ""), R"({"ipv4":"10.0.0.1"})");
    EXPECT_EQ(Remote("10.0.0.1", "65536"), R"({"ipv4":"10.0.0.1"})");
    EXPECT_EQ(Remote("10.0.0.1", "80x"), R"({"ipv4":"10.0.0.1"})");
    EXPECT_EQ(Remote("2001", "db8::1:4711"), R"({"ipv6":"2001:db8::1","port":4711})");
    EXPECT_EQ(Remote("[fe80", ":1]:80"), R"({"ipv6":"fe80::1","port":80})");
    EXPECT_EQ(Remote("", ":1:80"), R"({"ipv6":"::1","port":80})");
    EXPECT_EQ(Remote("", ""), "none");
    EXPECT_EQ(Remote("oss.example.net", "80"), "none");
}

TEST(ZipkinSpan, TheServiceIsTheProcessOrElseTheComponent) {
    EXPECT_EQ(Service("NBI:Agent-7-2:/rest/mrb/v1/corba/:x"), "nbi:agent-7-2");
    EXPECT_EQ(Service(":--:/rest/mrb/v1/corba/:x"), "mrb");
    EXPECT_EQ(Service("other"), "mrb");
    EXPECT_EQ(Service(""), "mrb");
}

TEST(ZipkinSpan, ASpanWithoutProperIdsIsNone) {
    for (const char* const id :
         {"", "0", "0000000000000000", "xyz", "00000000000000a", "the-trace-of-1234"}) {
        EXPECT_TRUE(ZipkinSpan(SampleSpan(id), "mrb").isNull()) << id;
        Json::Value span = SampleSpan();
        span["id"] = id;
        EXPECT_TRUE(ZipkinSpan(span, "mrb").isNull()) << id;
    }
    EXPECT_FALSE(ZipkinSpan(SampleSpan(std::string(32, 'a')), "mrb").isNull());
}

TEST(ZipkinSpan, ASpanOfAnotherShapeRaisesOrLacksThings) {
    EXPECT_THROW(ZipkinSpan(Json::Value(Json::arrayValue), "mrb"), Json::Exception);
    Json::Value bare;
    bare["traceId"] = "00000000000000a1";
    bare["id"] = "00000000000000b2";
    EXPECT_EQ(ZipkinSpan(bare, "mrb")["duration"].asInt(), 1);
}
