#include <memory>
#include <stdexcept>

#include "standalone/registry.h"
#include "tests/unit/logging/marshalled_fixture.h"

namespace {

using qv_test::Last;
using qv_test::Mixed;
using qv_test::TargetServant;

class MarshalledValues : public qv_test::MarshalledFixture {};

/// A log service that can't tell, each second time it is asked, how much is to be written.
class UnsureLogService final : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    UnsureLogService()
        : m_former(qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, "LogSvcInterface",
                                                       qv_standalone::MakeServiceObject(*this))) {}
    ~UnsureLogService() override {
        qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, "LogSvcInterface", m_former);
    }

    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string&, const std::string&, const std::string&) override {
        return nullptr;
    }
    int IsVerboseLog() override {
        if (++m_asked % 2 == 0) {
            throw std::runtime_error("no answer");
        }
        return 1;
    }

  private:
    int m_asked = 0;
    const std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> m_former;
};
TEST_F(MarshalledValues, EveryModeAndAResult) {
    Mixed mixed;
    capture->SetVerbose(1);
    mixed.Call(target);
    ExpectSame(
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 1 label before}\n"
        "--- Parameter No.3 = 5\n } ",
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 2 label after}\n"
        "--- Parameter No.3 = {0 1 2}\n--- Parameter No.4 = 5\n } mixed @return: 77\n");
}

TEST_F(MarshalledValues, ATerseReplyLeavesOutWhatGoesOut) {
    Mixed mixed;
    capture->SetVerbose(0);
    mixed.Call(target);
    ExpectSame(
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 1 label before}\n"
        "--- Parameter No.3 = 5\n } ",
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 2 label after}\n"
        "--- Parameter No.3 = 5\n } mixed @return: 77\n");
}

TEST_F(MarshalledValues, OutsWithoutAResult) {
    for (const int verbose : {1, 0}) {
        capture->SetVerbose(verbose);
        CORBA::String_var text;
        CORBA::Any detail;
        detail <<= "before";
        Values::Octets_var octets;
        target->given(text.out(), detail, octets.out(), 9);
        const std::string request = "ParaList = {\n--- Parameter No.1 = before\n--- Parameter No.2 = 9\n } ";
        ExpectSame(request,
                   verbose
                       ? "ParaList = {\n--- Parameter No.1 = given\n--- Parameter No.2 = null\n"
                         "--- Parameter No.3 = {x y}\n--- Parameter No.4 = 9\n } ReplyStatus = SUCCESSFUL!\n"
                       : "ParaList = {\n--- Parameter No.1 = null\n--- Parameter No.2 = 9\n } "
                         "ReplyStatus = SUCCESSFUL!\n");
    }
}

TEST_F(MarshalledValues, AZeroOctetEndsTheBlockAndTheResultEachForItself) {
    servant.m_secondOctet = 0;
    capture->SetVerbose(1);
    CORBA::String_var text;
    CORBA::Any detail;
    detail <<= "before";
    Values::Octets_var octets;
    target->given(text.out(), detail, octets.out(), 9);
    EXPECT_EQ(Last().direct[1].text,
              "ParaList = {\n--- Parameter No.1 = given\n--- Parameter No.2 = null\n--- Parameter No.3 = {x "
              "ReplyStatus = SUCCESSFUL!\n");
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    octets = target->blob(3);
    ExpectSame("ParaList = {\n--- Parameter No.1 = 3\n } ",
               "ParaList = {\n--- Parameter No.1 = 3\n } blob @return: {");
}

TEST_F(MarshalledValues, NothingAtAll) {
    target->nothing();
    ExpectSame("ParaList = {\n } ", "ParaList = {\n } ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(MarshalledValues, SecretsAreMaskedWhereverTheyGo) {
    const CORBA::String_var answer = target->modifyPassword("oss1", "old secret", "new secret");
    const std::string block =
        "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n "
        "} ";
    ExpectSame(block, block + "modifyPassword @return: done\n");

    capture->SetVerbose(1);
    CORBA::String_var secret = CORBA::string_dup("old secret");
    CORBA::Long code = 0;
    target->planGateway(secret.inout(), code);
    ExpectSame("ParaList = {\n--- Parameter No.1 = ******\n } ",
               "ParaList = {\n--- Parameter No.1 = ******\n--- Parameter No.2 = 12\n } planGateway @return: "
               "true\n");

    Calls::NameValues pairs;
    pairs.length(2);
    pairs[0].name = CORBA::string_dup("USERNAME");
    pairs[0].value = CORBA::string_dup("oss1");
    pairs[1].name = CORBA::string_dup("USERPWD");
    pairs[1].value = CORBA::string_dup("secret");
    target->logOutSession(pairs);
    const std::string masked =
        "ParaList = {\n--- Parameter No.1 = {{name USERNAME value oss1} {name USERPWD value ******}}\n } ";
    ExpectSame(masked, masked + "ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(MarshalledValues, ARecordThatBreaksOffShowsNoSecret) {
    Calls::NameValues pairs;
    pairs.length(1);
    pairs[0].name = CORBA::string_dup("USERPWD");
    pairs[0].value = CORBA::string_dup("secret");
    {
        const UnsureLogService unsure;
        leaver->logOutSession(pairs, "end of the day");
    }
    const std::string text = "---ERROR: Exception occurred when parsing message!";
    ExpectSame(text, text);
    EXPECT_EQ(Last().direct[0].result, -1);
}

TEST_F(MarshalledValues, AUnionWithoutAnActiveMemberMarksTheReply) {
    const Values::Maybe_var maybe = target->maybe(false);
    ExpectSame("ParaList = {\n--- Parameter No.1 = false\n } ",
               "ParaList = {\n--- Parameter No.1 = false\n } maybe @return: \n");
    EXPECT_EQ(Last().direct[1].result, -1);
}

TEST_F(MarshalledValues, ReferencesAndSilentKinds) {
    const Values::Thing_var thing = target->reference(Values::Thing::_nil());
    EXPECT_EQ(Last().direct[0].text, Last().throughAnys[0].text);
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    EXPECT_NE(Last().direct[1].text.find("reference @return: Object reference( IDL:Values/Thing:1.0 )IOR:"),
              std::string::npos);
    const std::unique_ptr<Values::Silent> silent(TargetServant::NewSilent());
    const Values::Silent_var back = target->silent(*silent);
    const std::string text =
        "{d null first 11 c null ll null ull null ld null ws null wc null amount null fee null type null "
        "last 12}";
    ExpectSame("ParaList = {\n--- Parameter No.1 = " + text + "\n } ",
               "ParaList = {\n--- Parameter No.1 = " + text + "\n } silent @return: " + text + "\n");
}

TEST_F(MarshalledValues, AValueTypeIsNullAndTheParametersBehindItPrint) {
    const Values::Boxed_var value = new Values::Boxed(7);
    const std::string block =
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = null\n--- Parameter No.3 = 5\n } ";
    for (Values::Boxed* const given : {value.in(), static_cast<Values::Boxed*>(nullptr)}) {
        const CORBA::String_var answer = target->boxed("a", given, 5);
        ExpectSame(block, block + "boxed @return: boxed\n");
    }
    EXPECT_TRUE(capture->Entries("corbadebug").empty());
}

TEST_F(MarshalledValues, AValueTypeInAStructMarksTheRecord) {
    Values::Carrier carrier;
    carrier.name = CORBA::string_dup("bag");
    carrier.inside = new Values::Boxed(7);
    const CORBA::String_var answer = target->carried(carrier);
    const std::string block = "ParaList = {\n--- Parameter No.1 = {name bag inside \n}";
    ExpectSame(block, block + "carried @return: carried\n");
    EXPECT_EQ(Last().direct[0].result, -1);
}

TEST_F(MarshalledValues, OnewaysAndAttributes) {
    Values::Rows rows;
    rows.length(2);
    target->hint(rows);
    ExpectSame("ParaList = {\n--- Parameter No.1 = {{} {}}\n } ",
               "ParaList = {\n--- Parameter No.1 = {{} {}}\n } ReplyStatus = SUCCESSFUL!\n");
    Values::Choice choice;
    choice.number(8);
    target->choice(choice);
    ExpectSame("ParaList = {\n--- Parameter No.1 = number 8\n } ",
               "ParaList = {\n--- Parameter No.1 = number 8\n } ReplyStatus = SUCCESSFUL!\n");
    const Values::Choice_var read = target->choice();
    ExpectSame("ParaList = {\n } ", "ParaList = {\n } _get_choice @return: number 8\n");
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qv_test::OrbWithInterceptor();
    return RUN_ALL_TESTS();
}
