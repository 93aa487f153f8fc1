#include "logging/logmgr.h"

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "standalone/registry.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/request/fake_server_request_info.h"

namespace {

using namespace NS_CORBA;
using qv_test::LogMgrProbe;
using Categories = std::vector<std::string>;

class LogMgrTest : public qv_test::LogFixture {};

const LogMgrProbe::SecretParameters kSecretParameters = {
    {"getEmsSession", {1}},
    {"getHistoryPMData", {2}},
    {"getAllAlarmsByFTP", {2}},
    {"modifyPassword", {1, 2}},
    {"createPMCollectionTask", {3}},
    {"getAllHistoryAlarmsByFTP", {2}},
    {"getAllMicrowaveLinksReport", {2}},
    {"getNMorEmManager", {1, 3}},
    {"ping", {0}},
    {"planGateway", {0}},
    {"getExchangeRsaPublicKey", {0}},
    {"GetSTFromGWByUserInfo", {1, 4}},
    {"Push_events", {0}},
};

/// A log service that can't open anything without failing.
class RaisingLogService : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string&, const std::string&, const std::string&) override {
        throw std::runtime_error("no descriptors");
    }
    int IsVerboseLog() override { return 0; }
};

TEST_F(LogMgrTest, WithAllSwitchesOffInitOpensTwoChannelsAndFillsTheTable) {
    EXPECT_TRUE(InitLog({{"bLogOperation", "0"}, {"bLogNotify", "0"}, {"bLogAlaram", "0"}}));
    EXPECT_EQ(OpenedCategories(), (Categories{"corbadebug", "corbasys"}));
    EXPECT_EQ(LogMgrProbe::Secrets(Manager()), kSecretParameters);
}

TEST_F(LogMgrTest, ChannelsAreOpenedInOrderForTheAgentsBundle) {
    EXPECT_TRUE(InitLog({{"bLogOperation", "1"}, {"bLogNotify", "1"}, {"bLogAlaram", "1"}}));
    EXPECT_EQ(OpenedCategories(),
              (Categories{"corbadebug", "corbasys", "corbaoper", "corbanotify", "corba_alarm"}));
    for (const qv_test::OpenedLog& log : capture->Opened()) {
        EXPECT_EQ(log.bundle, "qv_corbaagent_bundle");
        EXPECT_EQ(log.module, "qv_corbaagent_corba");
    }
}

TEST_F(LogMgrTest, ARefusedNotificationChannelFailsInitButNotTheOthers) {
    capture->Refuse("corbanotify");
    EXPECT_FALSE(InitLog({{"bLogOperation", "1"}, {"bLogNotify", "1"}, {"bLogAlaram", "1"}}));
    EXPECT_TRUE(LogMgrProbe::Secrets(Manager()).empty());

    qv_test::FakeServerRequestInfo info;
    TaWriteOperLog(&info, 0);
    TaWriteAlarmLog(std::stringstream("alarm"));
    TaWriteAlarmNotifyLog(std::stringstream("lost"));
    TaTrace("trace");
    EXPECT_EQ(capture->Entries("corbaoper").size(), 1u);
    EXPECT_EQ(capture->Entries("corba_alarm").size(), 1u);
    EXPECT_EQ(capture->Entries("corbasys").size(), 1u);
    EXPECT_TRUE(capture->Entries("corbanotify").empty());

    Manager().InitIfNameToParamPos();  // for a bundle that goes on
    EXPECT_EQ(LogMgrProbe::Secrets(Manager()), kSecretParameters);
}

TEST_F(LogMgrTest, EachRefusedOptionalChannelLeavesTheOthersOpen) {
    capture->Refuse("corbaoper");
    EXPECT_FALSE(InitLog({{"bLogOperation", "1"}, {"bLogNotify", "1"}, {"bLogAlaram", "1"}}));
    EXPECT_TRUE(LogMgrProbe::Secrets(Manager()).empty());
    TaWriteAlarmNotifyLog(std::stringstream("lost"));
    TaWriteAlarmLog(std::stringstream("alarm"));
    EXPECT_EQ(capture->Entries("corbanotify").size(), 1u);
    EXPECT_EQ(capture->Entries("corba_alarm").size(), 1u);

    capture->Refuse("corba_alarm");
    config.Set("bLogOperation", "0");
    EXPECT_FALSE(Manager().Init());
    EXPECT_TRUE(LogMgrProbe::Secrets(Manager()).empty());
}

TEST_F(LogMgrTest, AnOpenChannelIsSilentWhileItsSwitchIsOff) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}, {"bLogNotify", "1"}, {"bLogAlaram", "1"}}));
    config.Set("bLogOperation", "0");
    config.Set("bLogNotify", "0");
    config.Set("bLogAlaram", "0");
    ASSERT_TRUE(Manager().GetLogCfg());
    qv_test::FakeServerRequestInfo info;
    TaWriteOperLog(&info, 0);
    TaWriteAlarmNotifyLog(std::stringstream("lost"));
    TaWriteAlarmLog(std::stringstream("alarm"));
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(LogMgrTest, WithoutADebugChannelNothingElseIsOpened) {
    capture->Refuse("corbadebug");
    EXPECT_FALSE(InitLog({{"bLogOperation", "1"}}));
    EXPECT_EQ(OpenedCategories(), Categories{"corbadebug"});
    EXPECT_FALSE(LogMgrProbe::LogsOperations(Manager()));
}

TEST_F(LogMgrTest, WithoutASystemChannelTheOptionalOnesStayClosed) {
    capture->Refuse("corbasys");
    EXPECT_FALSE(InitLog({{"bLogOperation", "1"}}));
    EXPECT_EQ(OpenedCategories(), (Categories{"corbadebug", "corbasys"}));
    EXPECT_TRUE(LogMgrProbe::LogsOperations(Manager()));
    TaDebug(3, "still here");
    EXPECT_TRUE(capture->Contains("corbadebug", "still here"));
}

TEST_F(LogMgrTest, ASecondInitOpensAllChannelsAgain) {
    EXPECT_TRUE(InitLog({{"bLogOperation", "1"}}));
    EXPECT_TRUE(Manager().Init());
    EXPECT_EQ(OpenedCategories(), (Categories{"corbadebug", "corbasys", "corbaoper",  //
                                              "corbadebug", "corbasys", "corbaoper"}));
}

TEST_F(LogMgrTest, AnAbsentKeyLeavesItsSwitchOff) {
    EXPECT_TRUE(InitLog({{"bLogNotify", "1"}}));
    EXPECT_FALSE(LogMgrProbe::LogsOperations(Manager()));
    EXPECT_TRUE(LogMgrProbe::LogsNotifications(Manager()));
    EXPECT_FALSE(LogMgrProbe::LogsAlarms(Manager()));
    EXPECT_EQ(OpenedCategories(), (Categories{"corbadebug", "corbasys", "corbanotify"}));
}

TEST_F(LogMgrTest, AKeyThatVanishesLeavesItsSwitchAsItWas) {
    EXPECT_TRUE(InitLog({{"bLogOperation", "-1"}, {"bLogAlaram", "2"}}));
    config.Erase("bLogOperation");
    config.Set("bLogAlaram", "0");
    EXPECT_TRUE(Manager().GetLogCfg());
    EXPECT_TRUE(LogMgrProbe::LogsOperations(Manager()));
    EXPECT_FALSE(LogMgrProbe::LogsAlarms(Manager()));
}

TEST_F(LogMgrTest, AFormattedTextOf4095CharactersIsWrittenAndOneMoreGivesAnEmptyRecord) {
    ASSERT_TRUE(InitLog());
    const std::string fits(4095, 'x');
    const std::string tooLong(4096, 'x');
    TaDebugWithPara(1, "%s", fits.c_str());
    TaDebugWithPara(1, "%s", tooLong.c_str());
    TaTrace("%s", fits.c_str());
    TaTrace("%s", tooLong.c_str());
    ASSERT_EQ(capture->Entries().size(), 4u);
    EXPECT_EQ(capture->Entries()[0].text, fits);
    EXPECT_EQ(capture->Entries()[1].text, "");
    EXPECT_EQ(capture->Entries()[1].level, 1);
    EXPECT_EQ(capture->Entries()[2].text, fits);
    EXPECT_EQ(capture->Entries()[3].text, "");
}

TEST_F(LogMgrTest, AnAlarmTextEndsAtItsFirstNul) {
    ASSERT_TRUE(InitLog({{"bLogAlaram", "1"}}));
    TaWriteAlarmLog(std::stringstream(std::string("before\0after", 12)));
    ASSERT_EQ(capture->Entries().size(), 1u);
    EXPECT_EQ(capture->Entries()[0].text, "before");
}

TEST_F(LogMgrTest, ADestroyedManagerIsFollowedByOneWithEverythingClosed) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    CorbaLogMgr::Destroy();
    EXPECT_EQ(CorbaLogMgr::m_pInstance, nullptr);
    CorbaLogMgr::Destroy();
    TaDebug(3, "dropped");
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_FALSE(LogMgrProbe::LogsOperations(Manager()));
    EXPECT_TRUE(LogMgrProbe::Secrets(Manager()).empty());
}

TEST_F(LogMgrTest, AllThreadsGetTheSameManager) {
    std::vector<CorbaLogMgr*> seen(8, nullptr);
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (CorbaLogMgr*& slot : seen) {
        threads.emplace_back([&slot, &go] {
            while (!go.load()) {
            }
            slot = CorbaLogMgr::Instance();
        });
    }
    go.store(true);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(seen, std::vector<CorbaLogMgr*>(8, CorbaLogMgr::m_pInstance));
    EXPECT_NE(CorbaLogMgr::m_pInstance, nullptr);
}

/// Sees what the others get while it is being destroyed.
class ManagerThatLooksBack final : public CorbaLogMgr {
  public:
    explicit ManagerThatLooksBack(CorbaLogMgr*& seen) : m_seen(seen) {}
    ~ManagerThatLooksBack() override { m_seen = m_pInstance; }

  private:
    CorbaLogMgr*& m_seen;
};

TEST(LogMgrDestroyTest, NobodyIsHandedTheObjectWhileItIsDestroyed) {
    CorbaLogMgr::Destroy();
    CorbaLogMgr* seen = nullptr;
    CorbaLogMgr* const dying = new ManagerThatLooksBack(seen);
    seen = dying;
    CorbaLogMgr::m_pInstance = dying;
    CorbaLogMgr::Destroy();
    EXPECT_EQ(seen, nullptr);
}

TEST(LogMgrWithoutLogServiceTest, InitFailsAndWritesAreDropped) {
    qv_test::ScopedLogCapture none(qv_test::ScopedLogCapture::kNoService);
    qv_test::ScopedConfigItems config;
    EXPECT_FALSE(CorbaLogMgr::Instance()->Init());
    TaDebug(3, "dropped");
    EXPECT_TRUE(none->Entries().empty());
    CorbaLogMgr::Destroy();
}

TEST(LogMgrWithoutLogServiceTest, ALogServiceThatRaisesLeavesTheChannelClosed) {
    qv_test::ScopedLogCapture none(qv_test::ScopedLogCapture::kNoService);
    qv_test::ScopedConfigItems config;
    RaisingLogService raising;
    qv_standalone::ReplaceServiceObject("raising", qv_standalone::kLogService,
                                        qv_standalone::MakeServiceObject(raising));
    EXPECT_FALSE(CorbaLogMgr::Instance()->Init());
    TaDebug(3, "dropped");
    qv_standalone::ReplaceServiceObject("raising", qv_standalone::kLogService, nullptr);
    CorbaLogMgr::Destroy();
}

}  // namespace
