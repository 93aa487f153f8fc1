#include <stdexcept>

#include "agent/corbabaseagentconfig.h"
#include "orb/portability.h"
#include "standalone/thread_setup.h"
#include "tests/support/vtable_place.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

using NS_CORBA::CorbaBaseAgentConfig;
using qv_test::ExpectEntry;
using qv_test::LogEntry;
using qv_test::NotingHooks;
using Calls = std::vector<std::string>;

constexpr char kFile[] = "agent_request_interceptor";

class InterceptorTest : public qv_test::InterceptorFixture {
  protected:
    void PlugIn() { CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(&hooks); }

    /// Opens the channels, the one for operations among them.
    bool InitOperLog() { return InitLog({{"bLogOperation", "1"}}); }

    /// Every write to the operation channel raises what `raise` raises.
    template <class Raise>
    void FailOperLog(Raise raise) {
        capture->SetWriteHook([raise](const LogEntry& entry) {
            if (entry.category == "corbaoper") {
                raise();
            }
        });
    }

    /// Every write to any channel fails.
    void FailAllLogs() {
        capture->SetWriteHook([](const LogEntry&) { throw std::runtime_error("disk full"); });
    }

    void ExpectOnlyDebugEntry(int level, int line, const std::string& text) {
        const auto entries = capture->Entries("corbadebug");
        ASSERT_EQ(entries.size(), 1u);
        ExpectEntry(entries[0], "corbadebug", level, kFile, line, text);
    }

    /// The first lines of the operation records, which name their type.
    Calls RecordTypes() {
        Calls types;
        for (const LogEntry& entry : capture->Entries("corbaoper")) {
            const std::string head = "---MessageType:  ";
            types.push_back(entry.text.substr(head.size(), entry.text.find(',') - head.size()));
        }
        return types;
    }

    NotingHooks hooks;
};

TEST_F(InterceptorTest, WithoutHooksEveryRequestIsRefusedUncounted) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    for (int request = 0; request < 2; ++request) {
        try {
            interceptor->receive_request(&info);
            FAIL() << "request was not refused";
        } catch (const CORBA::NO_PERMISSION& refusal) {
            EXPECT_EQ(refusal.minor(), 0u);
            EXPECT_EQ(refusal.completed(), CORBA::COMPLETED_NO);
        }
    }
    const auto entries = capture->Entries();
    ASSERT_EQ(entries.size(), 2u);
    ExpectEntry(entries[0], "corbadebug", 1, kFile, 168,
                "[Server_Request_Interceptor::receive_request] No Permission, Interceptor is null");
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
}

TEST_F(InterceptorTest, ARefusalDoesNotDependOnTheLog) {
    ASSERT_TRUE(InitOperLog());
    FailAllLogs();
    qv_test::OwnInterceptor interceptor;
    EXPECT_THROW(interceptor->receive_request(&info), CORBA::NO_PERMISSION);
}

TEST_F(InterceptorTest, HooksThatAreTakenOutRefuseTheNextRequest) {
    qv_test::OwnInterceptor interceptor;
    PlugIn();
    EXPECT_NO_THROW(interceptor->receive_request(&info));
    CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(nullptr);
    EXPECT_THROW(interceptor->receive_request(&info), CORBA::NO_PERMISSION);
    EXPECT_EQ(hooks.calls, (Calls{"before", "after"}));
}

TEST_F(InterceptorTest, ARequestMeetsTheSameHooksTwice) {
    qv_test::OwnInterceptor interceptor;
    PlugIn();
    hooks.before = [] { CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(nullptr); };
    interceptor->receive_request(&info);
    EXPECT_EQ(hooks.calls, (Calls{"before", "after"}));
}

TEST_F(InterceptorTest, TheRecordIsWrittenAndTheCountTakenBetweenTheHooks) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    PlugIn();
    qv_test::OwnInterceptor interceptor;
    hooks.before = [this] {
        EXPECT_TRUE(RecordTypes().empty());
        EXPECT_EQ(Statistics(), "");
    };
    hooks.after = [this] {
        EXPECT_EQ(RecordTypes(), Calls{"REQUEST"});
        EXPECT_EQ(Statistics(), "ping = 1\n");
    };
    interceptor->receive_request(&info);
    EXPECT_EQ(hooks.calls, (Calls{"before", "after"}));
    const auto records = capture->Entries("corbaoper");
    ASSERT_EQ(records.size(), 1u);
    ExpectEntry(records[0], "corbaoper", -1, kFile, 113,
                "---MessageType:  REQUEST, RemoteAddress:  \n--- Request ID = 17, Operation Name = ping\n"
                "ParaList = {\n } ");
}

TEST_F(InterceptorTest, AFirstHookThatRaisesLeavesTheRequestUncountedAndUnlogged) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    PlugIn();
    hooks.before = [] { throw CORBA::BAD_PARAM(5, CORBA::COMPLETED_NO); };
    qv_test::OwnInterceptor interceptor;
    EXPECT_THROW(interceptor->receive_request(&info), CORBA::BAD_PARAM);
    EXPECT_EQ(hooks.calls, Calls{"before"});
    EXPECT_TRUE(RecordTypes().empty());
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));

    interceptor->send_exception(&info);
    EXPECT_EQ(RecordTypes(), Calls{"EXCEPTION"});
}

TEST_F(InterceptorTest, ASecondHookThatRaisesLeavesTheRequestCounted) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    PlugIn();
    hooks.after = [] { throw CORBA::BAD_PARAM(5, CORBA::COMPLETED_NO); };
    qv_test::OwnInterceptor interceptor;
    EXPECT_THROW(interceptor->receive_request(&info), CORBA::BAD_PARAM);
    EXPECT_EQ(Statistics(), "ping = 1\n");
    EXPECT_EQ(RecordTypes(), Calls{"REQUEST"});
}

TEST_F(InterceptorTest, WithTheStatisticsOffRequestsAreStillLoggedAndStillRefused) {
    EnableStatistics(false);
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    EXPECT_THROW(interceptor->receive_request(&info), CORBA::NO_PERMISSION);
    PlugIn();
    interceptor->receive_request(&info);
    interceptor->send_reply(&info);
    EXPECT_EQ(RecordTypes(), (Calls{"REQUEST", "REPLY"}));
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
}

TEST_F(InterceptorTest, TheEndOfARequestIsRecordedFromItsOwnPlace) {
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    interceptor->send_reply(&info);
    info.status = PortableInterceptor::USER_EXCEPTION;
    interceptor->send_exception(&info);
    interceptor->send_other(&info);
    const auto records = capture->Entries();
    ASSERT_EQ(records.size(), 2u);
    const std::string rest = ", RemoteAddress:  UNKNOW ADDRESS\n--- Request ID = 17, Operation Name = ping\n";
    ExpectEntry(records[0], "corbaoper", -1, kFile, 190,
                "---MessageType:  REPLY" + rest + "ParaList = {\n } ReplyStatus = SUCCESSFUL!\n");
    ExpectEntry(
        records[1], "corbaoper", -1, kFile, 219,
        "---MessageType:  EXCEPTION" + rest + "USER_EXCEPTION, ExceptList = {\n--- Exception No.1 = null\n}");
}

TEST_F(InterceptorTest, AFailedReplyRecordIsToldAndGoesNoFurther) {
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;

    const CORBA::TRANSIENT failure(3, CORBA::COMPLETED_NO);
    FailOperLog([failure] { throw failure; });
    EXPECT_NO_THROW(interceptor->send_reply(&info));
    ExpectOnlyDebugEntry(
        1, 192,
        "Exception: [Server_Request_Interceptor::send_reply] get CORBA exception whil writing reply "
        "operation log !==>" +
            qv_orb::ExceptionText(failure));

    capture->Clear();
    FailOperLog([] { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(interceptor->send_reply(&info));
    ExpectOnlyDebugEntry(
        0, 195,
        "[Server_Request_Interceptor::send_reply] get  std::excpetion(disk full) while writing reply "
        "operation log !");

    capture->Clear();
    FailOperLog([] { throw 7; });
    EXPECT_NO_THROW(interceptor->send_reply(&info));
    ExpectOnlyDebugEntry(
        0, 200,
        "[Server_Request_Interceptor::send_reply] get unknow excpetion while writing reply operation "
        "log !");
}

TEST_F(InterceptorTest, AFailedExceptionRecordIsToldAndGoesNoFurther) {
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    const std::string unknown =
        "[Server_Request_Interceptor::send_exception] get unknown exception while writing exception "
        "operation log !";

    const CORBA::TRANSIENT failure(3, CORBA::COMPLETED_NO);
    FailOperLog([failure] { throw failure; });
    EXPECT_NO_THROW(interceptor->send_exception(&info));
    ExpectOnlyDebugEntry(
        1, 221,
        "Exception: [Server_Request_Interceptor::send_exception] get CORBA exception will writing "
        "exception operation log !==>" +
            qv_orb::ExceptionText(failure));

    capture->Clear();
    FailOperLog([] { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(interceptor->send_exception(&info));
    ExpectOnlyDebugEntry(0, 225, unknown);

    capture->Clear();
    FailOperLog([] { throw 7; });
    EXPECT_NO_THROW(interceptor->send_exception(&info));
    ExpectOnlyDebugEntry(0, 225, unknown);
}

TEST_F(InterceptorTest, ALogThatFailsAltogetherChangesNothingForTheClient) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    PlugIn();
    FailAllLogs();
    qv_test::OwnInterceptor interceptor;
    EXPECT_NO_THROW(interceptor->receive_request(&info));
    EXPECT_NO_THROW(interceptor->send_reply(&info));
    EXPECT_NO_THROW(interceptor->send_exception(&info));
    EXPECT_EQ(hooks.calls, (Calls{"before", "after"}));
}

TEST_F(InterceptorTest, AnEndWithoutARecordStillForgetsTheHugeTask) {
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    qv_standalone::SetThreadContext("[oss][127.0.0.1]", "getAllManagedElements");
    qv_standalone::RegisterSynHugeTask(NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext());
    ASSERT_EQ(qv_standalone::HugeTaskCount(), 1u);
    interceptor->send_other(&info);
    EXPECT_EQ(qv_standalone::HugeTaskCount(), 0u);
    EXPECT_TRUE(capture->Entries().empty());
    qv_standalone::ClearThreadContext();
}

TEST_F(InterceptorTest, NoRequestGivesNoNames) {
    qv_test::OwnInterceptor interceptor;
    std::string manager = "left";
    std::string operation = "over";
    EXPECT_NO_THROW(interceptor->GetMgrAndIfName(manager, operation, nullptr));
    EXPECT_EQ(manager, "");
    EXPECT_EQ(operation, "");
}

TEST_F(InterceptorTest, ARequestGivesItsTargetAndItsOperation) {
    qv_test::OwnInterceptor interceptor;
    std::string manager;
    std::string operation;
    interceptor->GetMgrAndIfName(manager, operation, &info);
    EXPECT_EQ(manager, "IDL:Test/Gate:1.0");
    EXPECT_EQ(operation, "ping");
}

TEST_F(InterceptorTest, WithoutATargetThereIsNoOperationEither) {
    qv_test::OwnInterceptor interceptor;
    info.target = nullptr;
    std::string manager = "left";
    std::string operation = "over";
    interceptor->GetMgrAndIfName(manager, operation, &info);
    EXPECT_EQ(manager, "");
    EXPECT_EQ(operation, "");
    EXPECT_EQ(info.operationCalls, 0);
}

TEST_F(InterceptorTest, ANullOperationNameComesOutEmpty) {
    qv_test::OwnInterceptor interceptor;
    info.operationName = nullptr;
    std::string manager;
    std::string operation = "over";
    interceptor->GetMgrAndIfName(manager, operation, &info);
    EXPECT_EQ(manager, "IDL:Test/Gate:1.0");
    EXPECT_EQ(operation, "");
}

TEST_F(InterceptorTest, TheNameIsTheInterceptorsOwnCopy) {
    qv_test::OwnInterceptor interceptor;
    const CORBA::String_var before = interceptor->name();
    EXPECT_STREQ(before.in(), "gate");
    interceptor->SetInterceptorName("other");
    EXPECT_STREQ(before.in(), "gate");
    EXPECT_EQ(interceptor->GetInterceptorName(), "other");
    interceptor->destroy();
    const CORBA::String_var after = interceptor->name();
    EXPECT_STREQ(after.in(), "other");
}

TEST_F(InterceptorTest, TheContextsPointDoesNothing) {
    EnableStatistics(true);
    ASSERT_TRUE(InitOperLog());
    qv_test::OwnInterceptor interceptor;
    EXPECT_NO_THROW(interceptor->receive_request_service_contexts(&info));
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_EQ(info.operationCalls, 0);
}

TEST(RequestHooks, TheOneThatRunsFirstStandsSecondInTheClass) {
    using Hooks = NS_CORBA::RequestInterceptorBase;
    EXPECT_EQ(qv_test::VtablePlace(&Hooks::AfterReceiveRequest), 2);
    EXPECT_EQ(qv_test::VtablePlace(&Hooks::BeforeReceiveRequest), 3);
}

}  // namespace
