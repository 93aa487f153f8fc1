#include <algorithm>

#include "tests/unit/logging/record_fixture.h"

namespace {

using namespace NS_CORBA;
using qv_test::FakeOperation;
using SecretMasking = qv_test::RecordFixture;

struct Masked {
    const char* operation;
    int parameters;
    std::vector<int> positions;
};

TEST_F(SecretMasking, EachOperationOfTheTableHidesItsSecretsAndNothingElse) {
    const Masked table[] = {
        {"getEmsSession", 3, {1}},
        {"getHistoryPMData", 4, {2}},
        {"getAllAlarmsByFTP", 4, {2}},
        {"modifyPassword", 4, {1, 2}},
        {"createPMCollectionTask", 5, {3}},
        {"getAllHistoryAlarmsByFTP", 4, {2}},
        {"getAllMicrowaveLinksReport", 4, {2}},
        {"getNMorEmManager", 5, {1, 3}},
        {"ping", 2, {}},
        {"planGateway", 2, {0}},
        {"getExchangeRsaPublicKey", 2, {0}},
        {"GetSTFromGWByUserInfo", 6, {1, 4}},
        {"Push_events", 2, {0}},
        {"getAllManagedElements", 3, {}},
    };
    for (const Masked& row : table) {
        FakeOperation operation(row.operation);
        std::string block = "ParaList = {\n";
        for (int i = 0; i < row.parameters; ++i) {
            const std::string text = "text" + std::to_string(i);
            operation.AddText(text.c_str());
            const bool secret = std::count(row.positions.begin(), row.positions.end(), i) != 0;
            block += "--- Parameter No." + std::to_string(i + 1) + " = " + (secret ? "******" : text) + "\n";
        }
        const std::string record = Record(operation, 0);
        EXPECT_EQ(record.substr(record.find("ParaList")), block + " } ") << row.operation;
    }
}

TEST_F(SecretMasking, AMaskIsABoundedStringWhateverStoodThere) {
    Dynamic::ParameterList_var list = new Dynamic::ParameterList;
    list->length(1);
    list[0u].argument <<= static_cast<CORBA::Long>(4711);
    list[0u].mode = CORBA::PARAM_IN;
    Manager().SecurityHandle(list, "planGateway");
    const CORBA::TypeCode_var type = list[0u].argument.type();
    EXPECT_EQ(type->kind(), CORBA::tk_string);
    EXPECT_EQ(type->length(), 6u);
}

TEST_F(SecretMasking, AListThatIsTooShortIsRefused) {
    Dynamic::ParameterList_var list = new Dynamic::ParameterList;
    EXPECT_THROW(Manager().SecurityHandle(list, "planGateway"), CORBA::BAD_PARAM);
    list->length(2);
    list[0u].argument <<= "oss1";
    list[1u].argument <<= "old secret";
    EXPECT_THROW(Manager().SecurityHandle(list, "modifyPassword"), CORBA::BAD_PARAM);
    const char* text = nullptr;
    EXPECT_TRUE(list[0u].argument >>= text);
    EXPECT_STREQ(text, "oss1");
    EXPECT_TRUE(list[1u].argument >>= CORBA::Any::to_string(text, 6)) << "masked before it was refused";
    EXPECT_STREQ(text, "******");
    EXPECT_NO_THROW(Manager().SecurityHandle(list, "ping"));
    EXPECT_NO_THROW(Manager().SecurityHandle(list, "hello"));
}

TEST_F(SecretMasking, TheReplyMasksTheSameParameters) {
    FakeOperation operation("modifyPassword");
    operation.AddText("oss1");
    operation.AddText("old secret");
    operation.AddText("new secret");
    Record(operation, 0);
    const std::string record = Record(operation, 1);
    EXPECT_NE(record.find("--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n"), std::string::npos);
    EXPECT_EQ(record.find("secret"), std::string::npos);
}

class PrintedSecrets : public SecretMasking {
  protected:
    std::string Mask(const std::string& in, const std::string& operation = "logOutSession") {
        std::string out;
        Manager().LogOutSessionParamterAnonyms(out, in, operation);
        return out;
    }
};

TEST_F(PrintedSecrets, APasswordPairOfLogOutSessionIsMasked) {
    EXPECT_EQ(Mask("{{name USER value oss1} {name USERPWD value secret} {name X value y}}"),
              "{{name USER value oss1} {name USERPWD value ******} {name X value y}}");
}

TEST_F(PrintedSecrets, EveryPairIsMasked) {
    EXPECT_EQ(Mask("{name USERPWD value a}{name USERPWD value b c}"),
              "{name USERPWD value ******}{name USERPWD value ******}");
}

TEST_F(PrintedSecrets, AnEmptyValueBecomesABlank) {
    EXPECT_EQ(Mask("{name USERPWD value }"), "{name USERPWD value }");
    EXPECT_EQ(Mask("{name USERPWD value}"), "{name USERPWD value }");
}

TEST_F(PrintedSecrets, AKeyWithoutABraceStandsTwiceAndInClear) {
    EXPECT_EQ(Mask("ab name USERPWD value open"), "ab name USERPWD valueab name USERPWD value open");
}

TEST_F(PrintedSecrets, OtherOperationsKeepTheirText) {
    EXPECT_EQ(Mask("{name USERPWD value open}", "logInSession"), "{name USERPWD value open}");
    EXPECT_EQ(Mask("plain"), "plain");
    EXPECT_EQ(Mask(""), "");
}

TEST_F(PrintedSecrets, ARecordOfLogOutSessionIsMaskedInRequestAndReply) {
    FakeOperation operation("logOutSession");
    operation.AddText("{name USERPWD value secret}");
    EXPECT_NE(Record(operation, 0).find("= {name USERPWD value ******}\n"), std::string::npos);
    EXPECT_NE(Record(operation, 1).find("= {name USERPWD value ******}\n"), std::string::npos);
}

}  // namespace
