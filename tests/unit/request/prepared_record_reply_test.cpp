// The record of a reply takes over what the record of its request shows of the parameters; it has to be what
// it is without that.

#include "tests/unit/request/prepared_record_fixture.h"

namespace {

using namespace qv_test;

using ReplyOfPreparedRecordTest = PreparedRecordTest;

TEST_F(ReplyOfPreparedRecordTest, TheReplyShowsWhatTheRequestBroughtAndWhatTheServantGave) {
    capture->SetVerbose(1);
    Points::reply = [](Info request) { NS_CORBA::TaWriteOperLog(request, kReply); };
    Store("first");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[1].find("ParaList = {\n--- Parameter No.1 = first\n--- Parameter No.2 = 5\n"
                              "--- Parameter No.3 = a note of the servant's that is longer than the "
                              "client's\n--- Parameter No.4 = stored\n } store @return: 7\n"),
              std::string::npos);
}

TEST_F(ReplyOfPreparedRecordTest, TheReplyDoesNotDependOnWhatTheRequestLeft) {
    for (const int verbose : {0, 1}) {
        capture->SetVerbose(verbose);
        EXPECT_NE(ExpectSameReply([this] { Store("first"); }).find("No.1 = first\n"), std::string::npos);
        ExpectSameReply([this] { TakeOctets("abc", "last"); });
        ExpectSameReply([this] { target->ping(); });
        ExpectSameReply([this] { TakeOctets(std::string(200000, 'x'), "last"); });  // too much to be kept
    }
}

TEST_F(ReplyOfPreparedRecordTest, AReplyBehindAZeroOctetIsCutThere) {
    capture->SetVerbose(1);
    const std::string reply = ExpectSameReply([this] { TakeOctets(std::string("a\0b", 3), "last"); });
    EXPECT_EQ(reply, ", Operation Name = take\nParaList = {\n--- Parameter No.1 = {a take @return: last\n");
}

TEST_F(ReplyOfPreparedRecordTest, TheReplyKeepsSecretsMasked) {
    const std::string changed =
        ExpectSameReply([this] { target->modifyPassword("oss1", "old secret", "new secret"); });
    EXPECT_NE(changed.find("No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n"),
              std::string::npos);
    const std::string ended =
        ExpectSameReply([this] { target->logOutSession("{{name USERPWD value my secret}}"); });
    EXPECT_NE(ended.find("{{name USERPWD value ******}}"), std::string::npos);
    EXPECT_EQ((changed + ended).find("secret"), std::string::npos);
}

TEST_F(ReplyOfPreparedRecordTest, AReplyWhoseRequestIsNotWhollyPrintedTellsWhatItCan) {
    const CORBA::Any unprintable = Unprintable();
    ExpectSameReply([&] { Store("first", unprintable); });
}

}  // namespace
