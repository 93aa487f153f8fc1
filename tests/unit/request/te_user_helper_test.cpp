// Who calls, as a servant finds out during the call: with the POA trees that bundles make for their clients.

#include "request/te_user_helper.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "agent/persistent_poa.h"
#include "tests/support/child_process.h"
#include "tests/support/wait_for.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/request/client_tree.h"

namespace {

using NS_CORBA::TEUserHelper;
using qv_test::CallerServant;
using qv_test::ClientTree;

constexpr char kClient[] = "<USERNAME_TAG>anna</USERNAME_TAG><IPANDPORT_TAG>10.0.0.1:4711</IPANDPORT_TAG>";
constexpr char kOther[] = "<USERNAME_TAG>bert</USERNAME_TAG><IPANDPORT_TAG>10.0.0.2:4712</IPANDPORT_TAG>";
constexpr char kNoContext[] =
    "Exception: [TEUserHelper::GetNmsIPAddrByContext] Get nms ip address failed!==>";

/// An ORB that raises what isn't CORBA's.
class BrokenOrb : public qv_test::FakeOrb {
  public:
    CORBA::Object_ptr resolve_initial_references(const char*) override { throw std::runtime_error("broken"); }
};

class TEUserHelperTest : public qv_test::LogFixture {
  protected:
    TEUserHelperTest() { InitLog(); }

    /// What the servant of an object on the POA at `path` is told of its caller.
    std::string CallerOn(const std::vector<std::string>& path) {
        CallerServant servant;
        return tree.Call(path, servant);
    }

    void ExpectNoContextLogged() {
        const auto entries = capture->Entries();
        ASSERT_EQ(entries.size(), 1u);
        EXPECT_EQ(entries[0].category, "corbadebug");
        EXPECT_EQ(entries[0].level, 1);
        EXPECT_EQ(entries[0].file, "corbalogutil");
        EXPECT_EQ(entries[0].function, "unknown");
        EXPECT_EQ(entries[0].line, 156);
        EXPECT_EQ(entries[0].text.compare(0, sizeof kNoContext - 1, kNoContext), 0) << entries[0].text;
        EXPECT_NE(entries[0].text.find("NoContext"), std::string::npos) << entries[0].text;
    }

    /// The agent has that ORB from now on, as its only owner.
    static void UseOrb(CORBA::ORB_ptr orb) {
        const CORBA::ORB_var owner = orb;
        NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(orb);
    }

    ClientTree tree;
};

TEST_F(TEUserHelperTest, OutsideOfAnyCallThereIsNoCaller) {
    EXPECT_EQ(TEUserHelper::GetNmsIPAddrByContext(), "");
    ExpectNoContextLogged();
}

TEST_F(TEUserHelperTest, TheClientsOwnPoaNamesIt) {
    EXPECT_EQ(CallerOn({"M4400", kClient}), kClient);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(TEUserHelperTest, SessionAndIteratorStandForTheirClient) {
    EXPECT_EQ(CallerOn({"M4400", kClient, "session"}), kClient);
    EXPECT_EQ(CallerOn({"M4400", kClient, "iterator"}), kClient);
    EXPECT_EQ(CallerOn({"x", "session"}), "x");
}

TEST_F(TEUserHelperTest, OnlyOneStepUpIsTaken) {
    EXPECT_EQ(CallerOn({"x", "session", "iterator"}), "session");
    EXPECT_EQ(CallerOn({"x", "iterator", "session"}), "iterator");
}

TEST_F(TEUserHelperTest, AnyOtherPoaGivesItsPlainName) {
    EXPECT_EQ(CallerOn({"x"}), "x");
    EXPECT_EQ(CallerOn({}), "RootPOA");
    EXPECT_EQ(CallerOn({"session"}), "RootPOA");
    EXPECT_EQ(CallerOn({"session", "manager"}), "manager");
}

TEST_F(TEUserHelperTest, NamesAreComparedExactly) {
    EXPECT_EQ(CallerOn({"x", "Session"}), "Session");
    EXPECT_EQ(CallerOn({"x", "iterators"}), "iterators");
    EXPECT_EQ(CallerOn({"x", "session "}), "session ");
}

TEST_F(TEUserHelperTest, APersistentPoaGivesItsName) {
    const PortableServer::POA_var manager =
        NS_CORBA::get_persistent_poa(tree.Root(), "ManagedElementManager");
    capture->Clear();
    CallerServant servant;
    EXPECT_EQ(qv_test::ActiveCaller(manager.in(), servant, "id").Call(), "ManagedElementManager");
}

TEST_F(TEUserHelperTest, AThreadOfTheServantHasNoCaller) {
    CallerServant servant;
    servant.ask = [] {
        std::string answer;
        std::thread([&answer] { answer = TEUserHelper::GetNmsIPAddrByContext(); }).join();
        return answer;
    };
    EXPECT_EQ(tree.Call({kClient, "session"}, servant), "");
    ExpectNoContextLogged();
}

TEST_F(TEUserHelperTest, ACallWithinACallHasItsOwnCaller) {
    CallerServant inner;
    CallerServant outer;
    outer.ask = [&] {
        const std::string before = TEUserHelper::GetNmsIPAddrByContext();
        const std::string within = tree.Call({kOther, "session"}, inner);
        return before + "|" + within + "|" + TEUserHelper::GetNmsIPAddrByContext();
    };
    EXPECT_EQ(tree.Call({kClient, "session"}, outer), std::string(kClient) + "|" + kOther + "|" + kClient);
}

TEST_F(TEUserHelperTest, ThreadsDoNotDisturbEachOther) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        const std::string client = "client" + std::to_string(i);
        threads.emplace_back([this, client] {
            CallerServant servant;
            const qv_test::ActiveCaller active(tree.Poa({client, "session"}).in(), servant);
            for (int j = 0; j < 200; ++j) {
                EXPECT_EQ(client, active.Call());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(TEUserHelperTest, ACallFromAnotherProcessHasItsCaller) {
    CallerServant servant;
    const qv_test::ActiveCaller active(tree.Poa({kClient, "session"}).in(), servant);
    const std::string ior = tree.Ior(active.Reference().in());
    const qv_test::RunResult result = qv_test::Run({CALLER_PEER, ior});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, std::string(kClient) + "\n");
}

TEST_F(TEUserHelperTest, BeforeTheOrbStandsThereIsNoCaller) {
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(CORBA::ORB::_nil());
    EXPECT_EQ(TEUserHelper::GetNmsIPAddrByContext(), "");
    ASSERT_EQ(capture->Entries().size(), 1u);
    EXPECT_EQ(capture->Entries()[0].line, 156);
}

TEST_F(TEUserHelperTest, WithoutAPoaCurrentThereIsNoCaller) {
    UseOrb(new qv_test::FakeOrb);
    EXPECT_EQ(TEUserHelper::GetNmsIPAddrByContext(), "");
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(TEUserHelperTest, AnExceptionThatIsNotCorbasIsTracedAndThereIsNoCaller) {
    UseOrb(new BrokenOrb);
    EXPECT_EQ(TEUserHelper::GetNmsIPAddrByContext(), "");
    const auto entries = capture->Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].category, "corbasys");
    EXPECT_EQ(entries[0].level, -1);
    EXPECT_EQ(entries[0].file, "corbalogutil");
    EXPECT_EQ(entries[0].function, "unknown");
    EXPECT_EQ(entries[0].line, 159);
    EXPECT_EQ(entries[0].text, "[TEUserHelper::GetNmsIPAddrByContext] Unknown exception occurred!");
}

TEST_F(TEUserHelperTest, ALogThatFailsRaisesNothing) {
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    EXPECT_EQ(TEUserHelper::GetNmsIPAddrByContext(), "");
}

}  // namespace
