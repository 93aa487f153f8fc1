#include "logging/corba_talcom_log.h"

#include <json/writer.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "tests/support/scoped_env.h"
#include "tests/unit/logging/call_chain_fixture.h"
#include "tests/unit/request/client_tree.h"

namespace {

using NS_CORBA::WriteCallChain;
using qv_test::EndedRequest;
using qv_test::g_callChain;
using qv_test::kException;
using qv_test::kReply;
using qv_test::kRequest;
using CallChainTest = qv_test::CallChainFixture;
using Names = std::vector<std::string>;

constexpr char kClient[] = "<USERNAME_TAG>anna</USERNAME_TAG><IPANDPORT_TAG>10.0.0.1:47:11</IPANDPORT_TAG>";

Json::Int64 Now() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Json::Int64 Start(const Json::Value& span) {
    return span["annotations"][0]["timestamp"].asInt64();
}
Json::Int64 End(const Json::Value& span) {
    return span["annotations"][1]["timestamp"].asInt64();
}

TEST_F(CallChainTest, ASpanIsReportedAsThePlatformReadsIt) {
    const qv_test::ScopedEnv app("APP_NAME", "nbi");
    const qv_test::ScopedEnv process("PROCESS_NAME", "corba_agent");
    const qv_test::ScopedEnv node("NODE_ID", "7");
    const qv_test::ScopedEnv slot("PROCESS_SLOT", "2");
    qv_test::ClientTree tree;
    qv_test::CallerServant servant;
    servant.ask = [this] {
        WriteCallChain(nullptr, kRequest);
        WriteCallChain(&succeeded, kReply);
        return std::string();
    };
    int ids = 0;
    g_callChain.newId = [&ids] { return std::string(++ids == 1 ? "the-trace" : "the-span"); };
    const Json::Int64 before = Now();
    tree.Call({"M4400", kClient, "session"}, servant);
    const Json::Int64 after = Now();

    ASSERT_EQ(chain.Spans().size(), 1u);
    Json::Value span = chain.Spans()[0];
    EXPECT_EQ(span["annotations"][0]["timestamp"].type(), Json::intValue);
    EXPECT_EQ(span["annotations"][1]["timestamp"].type(), Json::intValue);
    EXPECT_LE(before, Start(span));
    EXPECT_LE(Start(span), End(span));
    EXPECT_LE(End(span), after);
    span["annotations"][0]["timestamp"] = 1;
    span["annotations"][1]["timestamp"] = 2;

    const char* const golden =
        R"({"annotations":[)"
        R"({"host":{"ip":"10.0.0.1","port":"47:11"},"timestamp":1,"value":"sr"},)"
        R"({"host":{"ip":"10.0.0.1","port":"47:11"},"timestamp":2,"value":"ss"}],)"
        R"("append":[)"
        R"({"annotationType":"i4","key":"type","value":"9"},)"
        R"({"annotationType":"STRING","key":"append","value":"POST"},)"
        R"({"annotationType":"i4","key":"async","value":"1"},)"
        R"({"annotationType":"i4","key":"result","value":"0"},)"
        R"({"annotationType":"i4","key":"resultCode","value":"200"}],)"
        R"("id":"the-span",)"
        R"("name":"nbi:corba_agent-7-2:/rest/mrb/v1/corba/:getAllEMSAndMESystemAlarms",)"
        R"("parentId":"0","traceId":"the-trace"})";
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    EXPECT_EQ(Json::writeString(compact, span), golden);
    EXPECT_EQ(chain.Extras()[0].type(), Json::nullValue);
    EXPECT_TRUE(capture->Entries().empty());
    for (const std::string& name : qv_test::TakeCallChainNames()) {
        EXPECT_EQ(name, "MRB");
    }
}

TEST_F(CallChainTest, ARequestOpensAChainOfItsOwn) {
    WriteCallChain(nullptr, kRequest);
    ASSERT_EQ(chain.Set().size(), 1u);
    EXPECT_EQ(chain.Set()[0].parent, "0");
    EXPECT_NE(chain.Set()[0].trace, chain.Set()[0].span);
    EXPECT_TRUE(chain.Spans().empty());
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CallChainTest, TwoRequestsInTurnHaveIdsOfTheirOwn) {
    for (int i = 0; i < 2; ++i) {
        WriteCallChain(nullptr, kRequest);
        WriteCallChain(&succeeded, kReply);
    }
    const auto spans = chain.Spans();
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_NE(spans[0]["traceId"], spans[1]["traceId"]);
    EXPECT_NE(spans[0]["id"], spans[1]["id"]);
    EXPECT_EQ(spans[0]["parentId"].asString(), "0");
    EXPECT_EQ(spans[1]["parentId"].asString(), "0");
}

TEST_F(CallChainTest, OnlyTheResultCodeTellsTheOutcome) {
    const PortableInterceptor::ReplyStatus failures[] = {
        PortableInterceptor::SYSTEM_EXCEPTION, PortableInterceptor::USER_EXCEPTION,
        PortableInterceptor::LOCATION_FORWARD, PortableInterceptor::TRANSPORT_RETRY};
    for (const PortableInterceptor::ReplyStatus status : failures) {
        EndedRequest request(status);
        WriteCallChain(nullptr, kRequest);
        WriteCallChain(&request, kException);
    }
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kException);
    const auto spans = chain.Spans();
    ASSERT_EQ(spans.size(), 5u);
    for (std::size_t i = 0; i < spans.size(); ++i) {
        EXPECT_EQ(spans[i]["append"][3]["value"].asString(), "0");
        EXPECT_EQ(spans[i]["append"][4]["value"].asString(), i < 4 ? "500" : "200");
    }
}

TEST_F(CallChainTest, AReplyWithoutItsRequestHasTwoEqualTimesAndIsTold) {
    chain.SetCallChainInfo("lost", "0", "span");
    WriteCallChain(&succeeded, kReply);
    ASSERT_EQ(chain.Spans().size(), 1u);
    EXPECT_NEAR(static_cast<double>(Start(chain.Spans()[0])), static_cast<double>(End(chain.Spans()[0])), 50);
    EXPECT_NEAR(static_cast<double>(Start(chain.Spans()[0])), static_cast<double>(Now()), 5000);
    ExpectDebug(77, "MakeSpanInfo: traceID : lost is not in the TraceId2TimeMap .");
}

TEST_F(CallChainTest, AReplyTakesTheEntryWithIt) {
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kReply);
    EXPECT_FALSE(capture->Contains("corbadebug", "TraceId2TimeMap"));
    WriteCallChain(&succeeded, kReply);
    EXPECT_TRUE(capture->Contains("corbadebug", "TraceId2TimeMap"));
}

TEST_F(CallChainTest, ARequestThatEndsInAForwardLeavesItsEntry) {
    WriteCallChain(nullptr, kRequest);
    const auto forwarded = qv_test::FakeCallChain::Current();
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kReply);
    EXPECT_NE(chain.Spans()[0]["traceId"].asString(), forwarded.trace);
    qv_test::FakeCallChain::Current() = forwarded;
    WriteCallChain(&succeeded, kReply);
    EXPECT_FALSE(capture->Contains("corbadebug", "TraceId2TimeMap"));
}

TEST_F(CallChainTest, AnIdThatIsThereKeepsItsTime) {
    g_callChain.newId = [] { return std::string("same"); };
    WriteCallChain(nullptr, kRequest);
    const Json::Int64 first = Now();
    while (Now() <= first + 1) {
        std::this_thread::yield();
    }
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kReply);
    EXPECT_LE(Start(chain.Spans()[0]), first);
}

TEST_F(CallChainTest, EntriesBelongToTheirThread) {
    WriteCallChain(nullptr, kRequest);
    const auto ids = qv_test::FakeCallChain::Current();
    std::thread([&] {
        qv_test::FakeCallChain::Current() = ids;
        WriteCallChain(&succeeded, kReply);
    }).join();
    EXPECT_TRUE(capture->Contains("corbadebug", "TraceId2TimeMap"));
    capture->Clear();
    WriteCallChain(&succeeded, kReply);
    EXPECT_FALSE(capture->Contains("corbadebug", "TraceId2TimeMap"));
}

TEST_F(CallChainTest, WithoutAnInstanceNothingIsDone) {
    g_callChain.instance = nullptr;
    bool asked = false;
    g_callChain.newId = [&asked] {
        asked = true;
        return std::string();
    };
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kReply);
    WriteCallChain(nullptr, kException);
    EXPECT_FALSE(asked);
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_EQ(qv_test::TakeCallChainNames(), (Names{"MRB", "MRB", "MRB"})) << "one lookup each";
    EXPECT_TRUE(NS_CORBA::MakeSpan("x", "200").isNull());
}

TEST_F(CallChainTest, OtherTypesOfMessageDoNothing) {
    WriteCallChain(&succeeded, 3);
    WriteCallChain(&succeeded, 255);
    EXPECT_TRUE(qv_test::TakeCallChainNames().empty());
}

TEST_F(CallChainTest, AReplyOfNoRequestReportsNothing) {
    WriteCallChain(nullptr, kReply);
    EXPECT_TRUE(chain.Spans().empty());
}

TEST_F(CallChainTest, AMissingIdIsToldAndTheFormerIdsStay) {
    WriteCallChain(nullptr, kRequest);
    const auto former = qv_test::FakeCallChain::Current();
    for (const int missing : {1, 2}) {
        capture->Clear();
        int ids = 0;
        g_callChain.newId = [&] { return std::string(++ids == missing ? "" : "new"); };
        WriteCallChain(nullptr, kRequest);
        EXPECT_EQ(ids, 2);
        ExpectDebug(164, "traceID or spanID is empty.");
    }
    EXPECT_EQ(chain.Set().size(), 1u);
    WriteCallChain(&succeeded, kReply);
    EXPECT_EQ(chain.Spans()[0]["traceId"].asString(), former.trace);
}

TEST_F(CallChainTest, RefusedIdsAreToldAndTheTimeIsNotedAllTheSame) {
    chain.refusal = 4;
    WriteCallChain(nullptr, kRequest);
    ExpectDebug(170, "SetOriginCallChain SetCallChainInfo failed.");
    capture->Clear();
    qv_test::FakeCallChain::Current() = chain.Set()[0];
    WriteCallChain(&succeeded, kReply);
    EXPECT_FALSE(capture->Contains("corbadebug", "TraceId2TimeMap"));
}

TEST_F(CallChainTest, OutsideOfACallThereIsNoAddress) {
    WriteCallChain(nullptr, kRequest);
    WriteCallChain(&succeeded, kReply);
    for (const Json::Value& annotation : chain.Spans()[0]["annotations"]) {
        EXPECT_EQ(annotation["host"]["ip"].asString(), "");
        EXPECT_EQ(annotation["host"]["port"].asString(), "");
        EXPECT_TRUE(annotation["host"]["ip"].isString());
    }
}

TEST_F(CallChainTest, OnlyATaggedAddressWithAColonIsAnAddress) {
    qv_test::ClientTree tree;
    qv_test::CallerServant servant;
    servant.ask = [this] {
        WriteCallChain(nullptr, kRequest);
        WriteCallChain(&succeeded, kReply);
        return std::string();
    };
    const std::pair<const char*, std::pair<const char*, const char*>> cases[] = {
        {"<IPANDPORT_TAG>10.0.0.1</IPANDPORT_TAG>", {"", ""}},
        {"<IPANDPORT_TAG>10.0.0.1:</IPANDPORT_TAG>", {"10.0.0.1", ""}},
        {"<IPANDPORT_TAG>:5</IPANDPORT_TAG>", {"", "5"}},
        {"<IPANDPORT_TAG></IPANDPORT_TAG>", {"", ""}},
        {"<IPANDPORT_TAG>10.0.0.1:5", {"", ""}},
        {"10.0.0.1:5", {"", ""}}};
    for (const auto& [poa, address] : cases) {
        tree.Call({poa}, servant);
        const Json::Value host = chain.Spans().back()["annotations"][1]["host"];
        EXPECT_EQ(host["ip"].asString(), address.first) << poa;
        EXPECT_EQ(host["port"].asString(), address.second) << poa;
    }
}

TEST_F(CallChainTest, TheEnvironmentIsReadForEachSpan) {
    const auto report = [this] {
        WriteCallChain(nullptr, kRequest);
        WriteCallChain(&succeeded, kReply);
        return chain.Spans().back()["name"].asString();
    };
    const qv_test::ScopedEnv process("PROCESS_NAME", std::nullopt);
    const qv_test::ScopedEnv node("NODE_ID", std::nullopt);
    const qv_test::ScopedEnv slot("PROCESS_SLOT", std::nullopt);
    {
        const qv_test::ScopedEnv app("APP_NAME", "one");
        EXPECT_EQ(report(), "one:--:/rest/mrb/v1/corba/:getAllEMSAndMESystemAlarms");
    }
    const qv_test::ScopedEnv app("APP_NAME", "two");
    qv_standalone::ClearThreadContext();
    EXPECT_EQ(report(), "two:--:/rest/mrb/v1/corba/:");
}

TEST_F(CallChainTest, ARecordOpensAndReportsASpanWhateverTheSwitchSays) {
    qv_test::TakeCallChainNames();
    NS_CORBA::TaWriteOperLog(nullptr, kRequest);
    ASSERT_EQ(chain.Set().size(), 1u);
    NS_CORBA::TaWriteOperLog(&succeeded, kReply);
    NS_CORBA::TaWriteOperLog(&failed, kException);
    const auto spans = chain.Spans();
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_EQ(spans[0]["append"][4]["value"].asString(), "200");
    EXPECT_EQ(spans[0]["traceId"].asString(), chain.Set()[0].trace);
    EXPECT_EQ(spans[1]["append"][4]["value"].asString(), "500");
    EXPECT_TRUE(capture->Entries("corbaoper").empty()) << "bLogOperation is off";
}

TEST_F(CallChainTest, WhatTheLibraryOrTheOrbRaisesPassesThrough) {
    WriteCallChain(nullptr, kRequest);
    qv_test::FakeServerRequestInfo mute;
    EXPECT_THROW(WriteCallChain(&mute, kReply), CORBA::NO_RESOURCES);
    chain.onReport = [] { throw std::runtime_error("no transport"); };
    EXPECT_THROW(WriteCallChain(&succeeded, kReply), std::runtime_error);
}

}  // namespace
