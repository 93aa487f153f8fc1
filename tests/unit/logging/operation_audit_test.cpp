#include "tests/unit/logging/record_fixture.h"

namespace {

using namespace NS_CORBA;
using qv_test::FakeOperation;
using OperationAudit = qv_test::RecordFixture;
using Fields = std::map<std::string, std::string>;

constexpr char kAddress[] = "<USERNAME_TAG>oss1</USERNAME_TAG><IPANDPORT_TAG>192.0.2.7:1</IPANDPORT_TAG>";

/// Called by a client that has logged in.
struct ClientOperation : FakeOperation {
    explicit ClientOperation(const char* name) : FakeOperation(name) { CalledBy("oss1", "192.0.2.7:1"); }
};

TEST_F(OperationAudit, ARiskyRequestIsAuditedWithItsSecretsMasked) {
    services.security.levels["modifyPassword"] = 2;
    ClientOperation operation("modifyPassword");
    operation.AddText("oss1");
    operation.AddText("old secret");
    operation.AddText("new secret");
    Record(operation, 0);
    ASSERT_EQ(services.audit.begun.size(), 1u);
    EXPECT_EQ(services.audit.begun[0].requestId, 17u);
    EXPECT_EQ(services.audit.begun[0].fields,
              (Fields{{"operName", "modifyPassword"},
                      {"nmsAddress", kAddress},
                      {"strInfo",
                       "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = ******\n"
                       "--- Parameter No.3 = ******\n } "},
                      {"riskLevel", "RISK"}}));
    EXPECT_TRUE(services.audit.ended.empty());
}

TEST_F(OperationAudit, AMinorRiskIsCalledSoAndAnotherLevelIsNotNamed) {
    ClientOperation operation("hello");
    services.security.levels["hello"] = 1;
    Record(operation, 0);
    services.security.levels["hello"] = 3;
    Record(operation, 0);
    services.security.levels["hello"] = -1;
    Record(operation, 0);
    ASSERT_EQ(services.audit.begun.size(), 3u);
    EXPECT_EQ(services.audit.begun[0].fields.at("riskLevel"), "MINOR");
    EXPECT_EQ(services.audit.begun[1].fields.count("riskLevel"), 0u);
    EXPECT_EQ(services.audit.begun[2].fields.count("riskLevel"), 0u);
}

TEST_F(OperationAudit, AnOperationWithoutRiskIsNotAudited) {
    ClientOperation operation("hello");
    Record(operation, 0);
    Record(operation, 1);
    EXPECT_TRUE(services.audit.begun.empty());
    EXPECT_TRUE(services.audit.ended.empty());
    EXPECT_EQ(services.security.asked, (std::vector<std::string>{"hello", "hello"}));
}

TEST_F(OperationAudit, AReplyEndsTheAuditWithItsResultText) {
    services.security.levels["count"] = 1;
    ClientOperation operation("count");
    operation.AddLong(7);
    operation.returned <<= static_cast<CORBA::Long>(42);
    Record(operation, 1);
    operation.returned = CORBA::Any();
    Record(operation, 1);
    ASSERT_EQ(services.audit.ended.size(), 2u);
    EXPECT_EQ(services.audit.ended[0].requestId, 17u);
    EXPECT_EQ(services.audit.ended[0].result, 0);
    EXPECT_EQ(services.audit.ended[0].detail, "count @return: 42\n");
    EXPECT_EQ(services.audit.ended[1].detail, "ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(OperationAudit, AnExceptionEndsTheAuditAsAFailure) {
    services.security.levels["hello"] = 1;
    ClientOperation operation("hello");
    operation.status = PortableInterceptor::SYSTEM_EXCEPTION;
    operation.exception <<= CORBA::NO_PERMISSION(5, CORBA::COMPLETED_NO);
    Record(operation, 2);
    Record(operation, 9);
    ASSERT_EQ(services.audit.ended.size(), 2u);
    EXPECT_EQ(services.audit.ended[0].result, 1);
    EXPECT_EQ(services.audit.ended[0].detail,
              "SYSTEM_EXCEPTION, ExceptList = {\n--- Exception No.1 = {minor 5 completed 1}\n}");
    EXPECT_EQ(services.audit.ended[1].result, 1);
    EXPECT_EQ(services.audit.ended[1].detail, "Other message type...not printed!");
}

TEST_F(OperationAudit, AMissingServiceMarksTheRecordAndKeepsItsText) {
    services.security.levels["hello"] = 1;
    ClientOperation operation("hello");
    for (int missing = 0; missing < 2; ++missing) {
        if (missing == 0) {
            services.RemoveAudit();
        } else {
            services.RemoveSecurity();
        }
        const std::string record = Record(operation, 0);
        EXPECT_EQ(record.substr(record.find("ParaList")),
                  "ParaList = {\n } ---ERROR: Exception occurred when parsing message!...this record is not "
                  "full!");
        ExpectDebugLine(561,
                        "[CorbaLogMgr::GetOperLogRecord] CORBA exception received when parsing message!");
    }
}

TEST_F(OperationAudit, ASecurityServiceThatRaisesMarksTheRecord) {
    ClientOperation operation("hello");
    services.security.hook = [] { throw std::runtime_error("no database"); };
    EXPECT_NE(Record(operation, 0).find("...this record is not full!"), std::string::npos);
    EXPECT_EQ(capture->Entries("corbadebug").at(0).line, 561);
}

TEST_F(OperationAudit, NothingIsAuditedWhileOperationsAreNotLogged) {
    config.Set("bLogOperation", "0");
    ASSERT_TRUE(Manager().Init());
    services.security.levels["hello"] = 2;
    ClientOperation operation("hello");
    TaWriteOperLog(&operation, 0);
    TaWriteOperLog(&operation, 1);
    EXPECT_TRUE(services.audit.begun.empty());
    EXPECT_TRUE(services.audit.ended.empty());
    EXPECT_TRUE(services.security.asked.empty());
}

}  // namespace
