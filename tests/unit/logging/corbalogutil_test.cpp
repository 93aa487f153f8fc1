#include "logging/corbalogutil.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "orb/portability.h"
#include "tests/unit/logging/log_fixture.h"

namespace {

using namespace NS_CORBA;
using qv_test::ExpectEntry;
using qv_test::LogEntry;

class CorbaLogUtilTest : public qv_test::LogFixture {};

/// Lets a fixed number of threads go on together.
class Barrier {
  public:
    explicit Barrier(int count) : m_missing(count) {}

    void Arrive() {
        std::unique_lock<std::mutex> lock(m_lock);
        if (--m_missing == 0) {
            m_complete.notify_all();
        }
        m_complete.wait(lock, [this] { return m_missing <= 0; });
    }

  private:
    std::mutex m_lock;
    std::condition_variable m_complete;
    int m_missing;
};

TEST_F(CorbaLogUtilTest, BeforeInitEveryWriteIsDropped) {
    std::stringstream text("alarm");
    TA_POS;
    TaDebug(0, "debug");
    TaDebugWithPara(0, "%s", "debug");
    TaTrace("%s", "trace");
    TaWriteOperLog(nullptr, 0);
    TaWriteAlarmLog(text);
    TaWriteAlarmNotifyLog(text);
    { FuncGuardTrace guard("Function"); }
    EXPECT_TRUE(capture->Opened().empty());
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaLogUtilTest, TaTraceGoesToTheSystemChannelWithoutALevel) {
    ASSERT_TRUE(InitLog());
    SetPos("source", 12);
    TaTrace("thread %d of %s", 3, "pool");
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(capture->Entries()[0], "corbasys", -1, "source", 12, "thread 3 of pool");
}

TEST_F(CorbaLogUtilTest, TaDebugGoesToTheDebugChannelAtItsLevel) {
    ASSERT_TRUE(InitLog());
    SetPos("source", 12);
    TaDebug(2, "100% plain");
    SetPos("source", 13);
    TaDebugWithPara(0, "%d%%", 100);
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 2, "source", 12, "100% plain");
    ExpectEntry(capture->Entries()[1], "corbadebug", 0, "source", 13, "100%");
}

TEST_F(CorbaLogUtilTest, ThePositionMacroTellsFileAndLineOfTheCallSite) {
    ASSERT_TRUE(InitLog());
    TA_POS;
    const int line = __LINE__ - 1;
    TaDebug(3, "here");
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 3, "corbalogutil_test", line, "here");
}

TEST_F(CorbaLogUtilTest, SourceBaseNameHasNeitherFolderNorExtension) {
    EXPECT_EQ(SourceBaseName("/a.b/c/logmgr.cpp"), "logmgr");
    EXPECT_EQ(SourceBaseName("logmgr.cpp"), "logmgr");
    EXPECT_EQ(SourceBaseName("logmgr"), "logmgr");
    EXPECT_EQ(SourceBaseName("a/two.parts.cpp"), "two.parts");
    EXPECT_EQ(SourceBaseName(""), "");
}

TEST_F(CorbaLogUtilTest, ThePositionStaysUntilItIsSetAgain) {
    ASSERT_TRUE(InitLog());
    SetPos("source", 12);
    TaDebug(3, "first");
    TaDebug(3, "second");
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(capture->Entries()[1], "corbadebug", 3, "source", 12, "second");
}

TEST_F(CorbaLogUtilTest, TwoThreadsReportEachItsOwnPosition) {
    ASSERT_TRUE(InitLog());
    Barrier bothSet(2);
    const auto logFrom = [&bothSet](const char* file, int line) {
        SetPos(file, line);
        bothSet.Arrive();
        TaDebug(3, file);
    };
    std::thread one(logFrom, "one", 1);
    std::thread two(logFrom, "two", 2);
    one.join();
    two.join();
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(*capture->Find("corbadebug", "one"), "corbadebug", 3, "one", 1, "one");
    ExpectEntry(*capture->Find("corbadebug", "two"), "corbadebug", 3, "two", 2, "two");
}

TEST_F(CorbaLogUtilTest, AThreadThatSetNoPositionLogsAnEmptyPlace) {
    ASSERT_TRUE(InitLog());
    SetPos("source", 12);
    std::thread([] { TaDebug(3, "nowhere"); }).join();
    ASSERT_EQ(capture->Entries().size(), 1u);
    EXPECT_EQ(capture->Entries()[0].file, "");
    EXPECT_EQ(capture->Entries()[0].function, "");
}

TEST_F(CorbaLogUtilTest, AnUnformattedTextKeepsItsLength) {
    ASSERT_TRUE(InitLog());
    const std::string text(4096UL * 3, 'x');
    TaDebug(3, text.c_str());
    ASSERT_EQ(capture->Entries().size(), 1u);
    EXPECT_EQ(capture->Entries()[0].text, text);
}

TEST_F(CorbaLogUtilTest, TaExceptionDescribesTheException) {
    ASSERT_TRUE(InitLog());
    CORBA::TRANSIENT ex(7, CORBA::COMPLETED_MAYBE);
    SetPos("agentserver", 99);
    TaException(ex, "[AgentServer::Destroy] Raised during shutdown orb!");
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(
        capture->Entries()[0], "corbadebug", 1, "agentserver", 99,
        "Exception: [AgentServer::Destroy] Raised during shutdown orb!==>" + qv_orb::ExceptionText(ex));
    EXPECT_NE(capture->Entries()[0].text.find("TRANSIENT"), std::string::npos);
}

TEST_F(CorbaLogUtilTest, AnExceptionOfTheLogHandlePassesToTheCaller) {
    ASSERT_TRUE(InitLog());
    capture->SetWriteHook([](const LogEntry&) { throw std::runtime_error("disk full"); });
    CORBA::TRANSIENT ex;
    EXPECT_THROW(TaDebug(3, "text"), std::runtime_error);
    EXPECT_THROW(TaDebugWithPara(3, "%s", "text"), std::runtime_error);
    EXPECT_THROW(TaException(ex, "text"), std::runtime_error);
}

TEST_F(CorbaLogUtilTest, AFunctionIsTracedOnEntryAndExit) {
    ASSERT_TRUE(InitLog());
    {
        FuncGuardTrace guard("Worker::svc");
        SetPos("elsewhere", 1);
    }
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 3, "corbalogutil", 167, "===[Worker::svc] Entering...");
    ExpectEntry(capture->Entries()[1], "corbadebug", 3, "corbalogutil", 174, "===[Worker::svc] Leaved!");
}

TEST_F(CorbaLogUtilTest, AFunctionLeftByAnExceptionIsTracedOnExit) {
    ASSERT_TRUE(InitLog());
    const auto failing = [] {
        FuncGuardTrace guard("Failing");
        throw std::runtime_error("first");
    };
    EXPECT_THROW(failing(), std::runtime_error);
    EXPECT_TRUE(capture->Contains("corbadebug", "===[Failing] Leaved!"));
}

TEST_F(CorbaLogUtilTest, AFailingExitTraceDoesNotReplaceTheExceptionOnItsWay) {
    ASSERT_TRUE(InitLog());
    int attempts = 0;
    capture->SetWriteHook([&attempts](const LogEntry& entry) {
        if (entry.text.find("Leaved!") != std::string::npos) {
            ++attempts;
            throw std::logic_error("second");
        }
    });
    const auto failing = [] {
        FuncGuardTrace guard("Failing");
        throw std::runtime_error("first");
    };
    EXPECT_THROW(failing(), std::runtime_error);
    EXPECT_EQ(attempts, 1);
}

TEST_F(CorbaLogUtilTest, AnEntryTraceThatFailsPassesItsException) {
    ASSERT_TRUE(InitLog());
    capture->SetWriteHook([](const LogEntry&) { throw std::runtime_error("disk full"); });
    EXPECT_THROW(FuncGuardTrace guard("Function"), std::runtime_error);
}

TEST_F(CorbaLogUtilTest, ANullFunctionNameIsALogicError) {
    const char* volatile name = nullptr;
    EXPECT_THROW(FuncGuardTrace guard(name), std::logic_error);
}

TEST_F(CorbaLogUtilTest, NoAlarmIsWrittenWithItsSwitchOff) {
    ASSERT_TRUE(InitLog({{"bLogAlaram", "0"}, {"bLogNotify", "1"}}));
    TaWriteAlarmLog(std::stringstream("alarm"));
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_EQ(OpenedCategories(), (std::vector<std::string>{"corbadebug", "corbasys", "corbanotify"}));
}

TEST_F(CorbaLogUtilTest, AlarmTextsGoToTheirChannelsWithoutALevel) {
    ASSERT_TRUE(InitLog({{"bLogAlaram", "1"}, {"bLogNotify", "1"}}));
    SetPos("supplier", 5);
    TaWriteAlarmLog(std::stringstream("alarm"));
    TaWriteAlarmNotifyLog(std::stringstream("lost"));
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(capture->Entries()[0], "corba_alarm", -1, "supplier", 5, "alarm");
    ExpectEntry(capture->Entries()[1], "corbanotify", -1, "supplier", 5, "lost");
}

TEST_F(CorbaLogUtilTest, NoAlarmNotificationIsWrittenWithItsSwitchOff) {
    ASSERT_TRUE(InitLog({{"bLogAlaram", "1"}}));
    TaWriteAlarmNotifyLog(std::stringstream("lost"));
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaLogUtilTest, TheStoreOfPositionsIsTheLogManager) {
    EXPECT_EQ(GetTss(), static_cast<ACE_TSS<PosForDbg>*>(CorbaLogMgr::Instance()));
    SetPos("source", 12);
    EXPECT_EQ((*GetTss())->file, "source");
    EXPECT_EQ((*GetTss())->function, "unknown");
    EXPECT_EQ((*GetTss())->line, 12);
}

}  // namespace
