#include <thread>

#include "logging/log_records.h"
#include "standalone/thread_setup.h"
#include "tests/unit/logging/record_fixture.h"
#include "valuesC.h"

// Whole records. Their texts were made by hand from the rules.

namespace {

using namespace NS_CORBA;
using qv_test::FakeOperation;
using OperLogRecord = qv_test::RecordFixture;

constexpr char kAddress[] = "<USERNAME_TAG>oss1</USERNAME_TAG><IPANDPORT_TAG>192.0.2.7:40001</IPANDPORT_TAG>";

std::string Head(const std::string& type, const std::string& address, const std::string& operation) {
    return "---MessageType:  " + type + ", RemoteAddress:  " + address +
           "\n--- Request ID = 17, Operation Name = " + operation + "\n";
}

std::string Head(const std::string& type, const std::string& operation) {
    return Head(type, kAddress, operation);
}

struct Refused {};

/// Called by a client that has logged in.
struct ClientOperation : FakeOperation {
    explicit ClientOperation(const char* name) : FakeOperation(name) { CalledBy("oss1", "192.0.2.7:40001"); }
};

TEST_F(OperLogRecord, ARequestShowsItsParametersWithSecretsMasked) {
    ClientOperation operation("getEmsSession");
    operation.AddText("oss1");
    operation.AddText("secret");
    EXPECT_EQ(Record(operation, 0), Head("REQUEST", "getEmsSession") +
                                        "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = "
                                        "******\n } ");
}

TEST_F(OperLogRecord, ARecordHasNoLevelAndTheCallersPosition) {
    ClientOperation operation("hello");
    operation.id = 4294967295u;
    SetPos("source", 12);
    TaWriteOperLog(&operation, 0);
    const auto records = capture->Entries();
    ASSERT_EQ(records.size(), 1u);
    qv_test::ExpectEntry(records[0], "corbaoper", -1, "source", 12,
                         std::string("---MessageType:  REQUEST, RemoteAddress:  ") + kAddress +
                             "\n--- Request ID = 4294967295, Operation Name = hello\nParaList = {\n } ");
}

TEST_F(OperLogRecord, AReplyWithoutAResultTellsItsStatus) {
    ClientOperation operation("hello");
    operation.AddLong(7);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "hello") +
                                        "ParaList = {\n--- Parameter No.1 = 7\n } ReplyStatus = "
                                        "SUCCESSFUL!\n");
}

TEST_F(OperLogRecord, AVoidResultIsNoResult) {
    ClientOperation operation("hello");
    operation.returned.replace(CORBA::_tc_void, nullptr);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "hello") + "ParaList = {\n } ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(OperLogRecord, AReplyWithAResultShowsItBehindTheParameters) {
    ClientOperation operation("count");
    operation.returned <<= static_cast<CORBA::Long>(42);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "count") + "ParaList = {\n } count @return: 42\n");
}

TEST_F(OperLogRecord, AUserExceptionIsListed) {
    ClientOperation operation("hello");
    operation.status = PortableInterceptor::USER_EXCEPTION;
    operation.exception <<= CORBA::NO_PERMISSION(5, CORBA::COMPLETED_NO);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 2),
              Head("EXCEPTION", "hello") +
                  "USER_EXCEPTION, ExceptList = {\n--- Exception No.1 = {minor 5 completed 1}\n}");
}

TEST_F(OperLogRecord, ASystemExceptionIsListed) {
    ClientOperation operation("hello");
    operation.status = PortableInterceptor::SYSTEM_EXCEPTION;
    operation.exception <<= CORBA::NO_PERMISSION(5, CORBA::COMPLETED_MAYBE);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 2),
              Head("EXCEPTION", "hello") +
                  "SYSTEM_EXCEPTION, ExceptList = {\n--- Exception No.1 = {minor 5 completed 2}\n}");
}

TEST_F(OperLogRecord, AnExceptionOfAnotherStatusGivesAnEmptyBodyThatIsMarked) {
    ClientOperation operation("hello");
    operation.status = PortableInterceptor::LOCATION_FORWARD;
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 2), Head("EXCEPTION", "hello") + "...this record is not full!");
}

TEST_F(OperLogRecord, AnyOtherMessageIsNotPrinted) {
    ClientOperation operation("hello");
    EXPECT_EQ(Record(operation, 3),
              Head("OTHER", "OTHER UNKNOW ADDRESS", "hello") + "Other message type...not printed!");
}

TEST_F(OperLogRecord, ATerseLogLeavesOutParametersOutWithoutAHoleInTheNumbers) {
    ClientOperation operation("list");
    operation.AddLong(1);
    operation.AddLong(2, CORBA::PARAM_OUT);
    operation.AddLong(3, CORBA::PARAM_INOUT);
    capture->SetVerbose(0);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "list") +
                                        "ParaList = {\n--- Parameter No.1 = 1\n--- Parameter No.2 = 3\n } "
                                        "ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(OperLogRecord, AVerboseReplyShowsParametersOut) {
    ClientOperation operation("list");
    operation.AddLong(1);
    operation.AddLong(2, CORBA::PARAM_OUT);
    operation.AddLong(3, CORBA::PARAM_INOUT);
    capture->SetVerbose(1);
    EXPECT_EQ(Record(operation, 0),
              Head("REQUEST", "list") + "ParaList = {\n--- Parameter No.1 = 1\n--- Parameter No.2 = 3\n } ");
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "list") +
                                        "ParaList = {\n--- Parameter No.1 = 1\n--- Parameter No.2 = 2\n"
                                        "--- Parameter No.3 = 3\n } ReplyStatus = SUCCESSFUL!\n");
}

// -- Who called -------------------------------------------------------------------------------------------

TEST_F(OperLogRecord, AReplyWithoutARequestOnItsThreadComesFromAnUnknownAddress) {
    ClientOperation operation("hello");
    EXPECT_EQ(Record(operation, 1).find(Head("REPLY", "UNKNOW ADDRESS", "hello")), 0u);
}

TEST_F(OperLogRecord, TheFirstReplyUsesTheAddressUp) {
    ClientOperation operation("hello");
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1).find(Head("REPLY", "hello")), 0u);
    EXPECT_EQ(Record(operation, 1).find(Head("REPLY", "UNKNOW ADDRESS", "hello")), 0u);
}

TEST_F(OperLogRecord, AnotherThreadsRequestIsNotThisThreads) {
    ClientOperation operation("hello");
    std::thread([&] { TaWriteOperLog(&operation, 0); }).join();
    EXPECT_EQ(Record(operation, 2).find(Head("EXCEPTION", "UNKNOW ADDRESS", "hello")), 0u);
}

TEST_F(OperLogRecord, APoaWithoutTagsGivesAnAddressOfEmptyTags) {
    FakeOperation operation("hello");
    operation.poas = {"RootPOA", "M4400", "Managers", "session"};
    EXPECT_EQ(
        Record(operation, 0)
            .find(Head("REQUEST", "<USERNAME_TAG></USERNAME_TAG><IPANDPORT_TAG></IPANDPORT_TAG>", "hello")),
        0u);
}

class ThreadContext {
  public:
    explicit ThreadContext(const std::string& userInfo) { qv_standalone::SetThreadContext(userInfo, ""); }
    ~ThreadContext() { qv_standalone::ClearThreadContext(); }
};

TEST_F(OperLogRecord, WithoutAPoaOfTheClientTheThreadsContextTellsTheCaller) {
    const ThreadContext context("user [oss2] at [192.0.2.8:5]");
    FakeOperation operation("hello");
    operation.poas = {"RootPOA", "M4400", "iterator"};
    EXPECT_EQ(Record(operation, 0)
                  .find(Head("REQUEST",
                             "<USERNAME_TAG>oss2</USERNAME_TAG><IPANDPORT_TAG>192.0.2.8:5</IPANDPORT_TAG>",
                             "hello")),
              0u);
}

TEST_F(OperLogRecord, AContextWithoutBothPairsOfBracketsOrWithAnEmptyOneTellsNobody) {
    for (const char* text :
         {"", "oss2", "[oss2]", "[oss2][", "[oss2]192.0.2.8]", "[][192.0.2.8]", "[oss2][]"}) {
        const ThreadContext context(text);
        FakeOperation operation("hello");
        EXPECT_EQ(Record(operation, 0).find(Head("REQUEST", "", "hello")), 0u) << text;
    }
}

TEST_F(OperLogRecord, WithoutPoasTheAddressStaysEmpty) {
    ClientOperation operation("hello");
    operation.adapterRaises = [] { throw CORBA::NO_RESOURCES(); };
    EXPECT_EQ(Record(operation, 0).find(Head("REQUEST", "", "hello")), 0u);
    EXPECT_TRUE(capture->Entries("corbadebug").empty());
}

// -- Failures ---------------------------------------------------------------------------------------------

TEST_F(OperLogRecord, WithTheSwitchOffTheRequestIsNotEvenAsked) {
    config.Set("bLogOperation", "0");
    ASSERT_TRUE(Manager().Init());
    capture->Clear();
    ClientOperation operation("getEmsSession");
    services.security.levels["getEmsSession"] = 2;
    TaWriteOperLog(&operation, 0);
    TaWriteOperLog(nullptr, 3);
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_EQ(operation.operationCalls, 0);
    EXPECT_TRUE(services.audit.begun.empty());
}

TEST_F(OperLogRecord, AnOperationWithoutANameIsUnknown) {
    ClientOperation operation(nullptr);
    EXPECT_EQ(Record(operation, 0), Head("REQUEST", "UNKNOWN") + "ParaList = {\n } ");
}

TEST_F(OperLogRecord, ARequestThatDoesNotTellItsNameLeavesAMarkedRecord) {
    ClientOperation operation("hello");
    operation.operationRaises = true;
    EXPECT_EQ(Record(operation, 0),
              std::string("---MessageType:  REQUEST, RemoteAddress:  ") + kAddress +
                  "\n--- Request ID = 0, Operation Name = UNKNOWN\n"
                  "ERROR: Exception occurred when parsing message!...this record is not full!");
    ExpectDebugLine(
        652, With("[CorbaLogMgr::GetOperLogRecord] CORBA exception <", FakeOperation::OperationFailure(),
                  "> received when parsing operation name & request_id!"));
}

TEST_F(OperLogRecord, ARecordWithoutARequestIsMarked) {
    TALogRecord record;
    EXPECT_EQ(Manager().GetOperLogRecord(nullptr, 1, record), -1);
    ExpectDebugLine(810, "[CorbaLogMgr::GetOperLogRecord] operation parameter is nullptr!");
}

TEST_F(OperLogRecord, ParametersThatTheOrbDoesNotTellLeaveAnEmptyList) {
    ClientOperation operation("hello");
    operation.argumentsRaise = [] { throw CORBA::NO_RESOURCES(1, CORBA::COMPLETED_NO); };
    EXPECT_EQ(Record(operation, 0), Head("REQUEST", "hello") + "ParaList = {\n } ");
    ExpectDebugLine(668, With("[CorbaLogMgr::GetOperLogRecord] CORBA exception <",
                              CORBA::NO_RESOURCES(1, CORBA::COMPLETED_NO),
                              "> received when parsing operation parameter list!"));
    operation.argumentsRaise = [] { throw Refused{}; };
    EXPECT_EQ(Record(operation, 0), Head("REQUEST", "hello") + "ParaList = {\n } ");
    ExpectDebugLine(674,
                    "[CorbaLogMgr::GetOperLogRecord] Unknown exception received when parsing operation "
                    "parameter list!");
}

TEST_F(OperLogRecord, AListShorterThanTheTableOfSecretsShowsNothingOfIt) {
    ClientOperation operation("modifyPassword");
    operation.AddText("oss1");
    operation.AddText("old secret");
    const std::string record = Record(operation, 0);
    EXPECT_EQ(record, Head("REQUEST", "modifyPassword") +
                          "---ERROR: Exception occurred when parsing message!...this record is not full!");
    ExpectDebugLine(553, With("[CorbaLogMgr::GetOperLogRecord] CORBA exception <", CORBA::BAD_PARAM(),
                              "> received when parsing message!"));
}

TEST_F(OperLogRecord, AResultThatTheOrbDoesNotTellLeavesTheParametersAndAMark) {
    ClientOperation operation("hello");
    operation.AddLong(7);
    operation.resultRaises = [] { throw CORBA::NO_RESOURCES(); };
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "hello") +
                                        "ParaList = {\n--- Parameter No.1 = 7\n } ---ERROR: Exception "
                                        "occurred when parsing message!...this record is not full!");
    EXPECT_EQ(capture->Entries("corbadebug").at(0).line, 553);
}

TEST_F(OperLogRecord, AnyOtherExceptionIsToldWithoutAText) {
    ClientOperation operation("hello");
    operation.exceptionRaises = [] { throw std::runtime_error("secret"); };
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 2),
              Head("EXCEPTION", "hello") +
                  "---ERROR: Exception occurred when parsing message!...this record is not full!");
    ExpectDebugLine(561, "[CorbaLogMgr::GetOperLogRecord] CORBA exception received when parsing message!");
}

TEST_F(OperLogRecord, AParameterThatCannotBePrintedEndsTheListAndMarksARequest) {
    ClientOperation operation("hello");
    operation.AddLong(1);
    operation.Add().argument <<= Values::Reference();
    operation.AddLong(3);
    CorbaBaseAgentConfig::Instance()->SetOrb(CORBA::ORB::_nil());
    const std::string block = "ParaList = {\n--- Parameter No.1 = 1\n--- Parameter No.2 = {target \n}";
    EXPECT_EQ(Record(operation, 0), Head("REQUEST", "hello") + block + "...this record is not full!");
    // In a reply the result decides.
    EXPECT_EQ(Record(operation, 1), Head("REPLY", "hello") + block + "ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(OperLogRecord, AnExceptionWithoutAValueIsToldInTheRecord) {
    ClientOperation operation("hello");
    std::string text = "kept";
    CORBA::Any nothing;
    nothing.replace(CORBA::_tc_long, nullptr);
    EXPECT_EQ(Manager().ParseExceptionInfo(nothing, 2, text), -1);
    EXPECT_EQ(
        text,
        "USER_EXCEPTION, ExceptList = {\n}---ERROR: Exception occurred when parsing exception message!");
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    EXPECT_EQ(debug[0].line, 1121);
    EXPECT_EQ(debug[0].text.find("[CorbaLogMgr::ParseExceptionInfo] CORBA exception <"), 0u);
    EXPECT_NE(debug[0].text.find("> received when parsing exception message!"), std::string::npos);
}

TEST_F(OperLogRecord, AnExceptionThatCannotBePrintedLeavesTheTextAsItWas) {
    CorbaBaseAgentConfig::Instance()->SetOrb(CORBA::ORB::_nil());
    CORBA::Any value;
    value <<= Values::Reference();
    std::string text;
    EXPECT_EQ(Manager().ParseExceptionInfo(value, 1, text), -1);
    EXPECT_EQ(text, "");
}

TEST_F(OperLogRecord, AnExceptionOfTheHandlePassesToTheCaller) {
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    ClientOperation operation("hello");
    EXPECT_THROW(TaWriteOperLog(&operation, 0), std::runtime_error);
}

TEST_F(OperLogRecord, AZeroOctetEndsTheResultAndOnlyThat) {
    ClientOperation operation("read");
    operation.AddLong(7);
    operation.returned <<= CORBA::Any::from_octet(0);
    Record(operation, 0);
    EXPECT_EQ(Record(operation, 1),
              Head("REPLY", "read") + "ParaList = {\n--- Parameter No.1 = 7\n } read @return: ");
}

TEST_F(OperLogRecord, EveryReplyStateHasItsLine) {
    EXPECT_EQ(Manager().ParseReplyState(0), "ReplyStatus = SUCCESSFUL!\n");
    EXPECT_EQ(Manager().ParseReplyState(1), "ReplyStatus = SYSTEM_EXCEPTION!\n");
    EXPECT_EQ(Manager().ParseReplyState(2), "ReplyStatus = USER_EXCEPTION!\n");
    EXPECT_EQ(Manager().ParseReplyState(3), "ReplyStatus = LOCATION_FORWARD!\n");
    EXPECT_EQ(Manager().ParseReplyState(4), "ReplyStatus = TRANSPORT_RETRY!\n");
    EXPECT_EQ(Manager().ParseReplyState(5), "ReplyStatus = UNKNOWN!");
    EXPECT_EQ(Manager().ParseReplyState(-1), "ReplyStatus = UNKNOWN!");
    EXPECT_EQ(Manager().ParseObjRef(), 0);
}

TEST_F(OperLogRecord, TheVerbosityIsAskedForEachParameterAnew) {
    ClientOperation operation("list");
    operation.AddLong(1, CORBA::PARAM_OUT);
    Record(operation, 0);
    std::string text;
    capture->SetVerbose(1);
    Manager().ParseParaInfo(&operation.parameters, text, 1);
    EXPECT_EQ(text, "ParaList = {\n--- Parameter No.1 = 1\n } ");
    capture->SetVerbose(0);
    Manager().ParseParaInfo(&operation.parameters, text, 1);
    EXPECT_EQ(text, "ParaList = {\n } ");
    Manager().ParseParaInfo(nullptr, text, 1);
    EXPECT_EQ(text, "ParaList = {\n } ");
}

}  // namespace
