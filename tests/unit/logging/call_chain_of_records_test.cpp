#include <stdexcept>

#include "tests/unit/logging/call_chain_fixture.h"
#include "tests/unit/logging/fake_services.h"

// With the operation log on: the call chain comes ahead of the record.

namespace {

using namespace qv_test;

class CallChainOfRecords : public CallChainFixture {
  protected:
    CallChainOfRecords() {
        config.Set("bLogOperation", "1");
        EXPECT_TRUE(Manager().Init());
        capture->Clear();
    }

    FakeServices services;
};

TEST_F(CallChainOfRecords, TheSpanIsOpenedAndReportedAheadOfTheRecord) {
    std::vector<std::size_t> set;
    std::vector<std::size_t> reported;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category == "corbaoper") {
            set.push_back(chain.Set().size());
            reported.push_back(chain.Spans().size());
        }
    });
    NS_CORBA::TaWriteOperLog(&succeeded, kRequest);
    NS_CORBA::TaWriteOperLog(&succeeded, kReply);
    NS_CORBA::TaWriteOperLog(&failed, kRequest);
    NS_CORBA::TaWriteOperLog(&failed, kException);
    EXPECT_EQ(set, (std::vector<std::size_t>{1, 1, 2, 2}));
    EXPECT_EQ(reported, (std::vector<std::size_t>{0, 1, 1, 2}));
}

TEST_F(CallChainOfRecords, ARequestWhoseSpanCannotBeOpenedLeavesNoRecord) {
    g_callChain.newId = []() -> std::string { throw std::runtime_error("no ids"); };
    EXPECT_THROW(NS_CORBA::TaWriteOperLog(&succeeded, kRequest), std::runtime_error);
    EXPECT_TRUE(capture->Entries("corbaoper").empty());
}

TEST_F(CallChainOfRecords, AnEndWhoseSpanCannotBeReportedLeavesNoRecord) {
    chain.onReport = [] { throw std::runtime_error("no transport"); };
    NS_CORBA::TaWriteOperLog(&succeeded, kRequest);
    EXPECT_EQ(capture->Entries("corbaoper").size(), 1u);
    capture->Clear();
    EXPECT_THROW(NS_CORBA::TaWriteOperLog(&succeeded, kReply), std::runtime_error);
    EXPECT_THROW(NS_CORBA::TaWriteOperLog(&failed, kException), std::runtime_error);
    EXPECT_TRUE(capture->Entries("corbaoper").empty());
}

}  // namespace
