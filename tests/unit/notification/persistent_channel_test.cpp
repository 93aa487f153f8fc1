// Persistent channels, call by call, against a notification service that does as it is told.
#include "tests/unit/notification/eventmgr_fixture.h"

namespace qv_test {
namespace {

constexpr char kSavedNil[] = "[EventMgr::CreatePersistentEventChannel] Event channel is NULL!";
constexpr char kSavedRaised[] =
    "[EventMgr::CreatePersistentEventChannel]:Exception rasied during _narrow operation, the eventchannle "
    "will "
    "recreated!";
constexpr char kOldRaised[] = "[EventMgr::CreatePersistentEventChannel] Destory old event channel failed!";
constexpr char kPersistentNil[] =
    "[EventMgr::CreatePersistentEventChannel] Create notification event channel failed!";
TEST_F(EventManager, WithoutAFileAllChannelsGoAndOneIsMade) {
    BePersistent();
    const EventChannel_var first = m_service.AddChannel();
    const EventChannel_var second = m_service.AddChannel();
    EXPECT_EQ(m_manager.Init(), 0);
    ASSERT_EQ(m_service.Channels().size(), 3u);
    EXPECT_FALSE(Alive(0));
    EXPECT_FALSE(Alive(1));
    EXPECT_TRUE(Alive(2));
    EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
    EXPECT_EQ(Calls(), (Texts{"get_all_channels", "get_event_channel", "destroy", "get_event_channel",
                              "destroy", "create_channel"}));
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, SavedChannelThatIsListedIsTakenOver) {
    BePersistent();
    const EventChannel_var other = m_service.AddChannel();
    const EventChannel_var saved = m_service.AddChannel();
    const EventChannel_var third = m_service.AddChannel();
    SaveReference(saved.in());
    const std::string contents = SavedReference();
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(m_manager.m_eventChannel->_is_equivalent(saved.in()));
    EXPECT_EQ(m_manager.CreateChannel(m_id, m_channel), 0);
    EXPECT_EQ(m_id, 77);
    EXPECT_EQ(m_service.Channels().size(), 3u);
    EXPECT_EQ(script().Count("destroy"), 0);
    EXPECT_EQ(script().Count("get_event_channel"), 4);  // up to the one that is it, twice
    EXPECT_EQ(SavedReference(), contents);
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, PersistentReinitialisationKeepsTheChannel) {
    BePersistent();
    ASSERT_EQ(m_manager.Init(), 0);
    const std::string before = Reference(m_manager.m_eventChannel.in());
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(Reference(m_manager.m_eventChannel.in()), before);
    EXPECT_EQ(m_service.Channels().size(), 1u);
    EXPECT_TRUE(Alive(0));
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, SavedChannelThatIsNotListedIsReplaced) {
    BePersistent();
    FakeNotifyService elsewhere(m_orb.in());
    const EventChannel_var unlisted = elsewhere.AddChannel();
    const EventChannel_var listed = m_service.AddChannel();
    SaveReference(unlisted.in());
    EXPECT_EQ(m_manager.CreateChannel(m_id, m_channel), -1);  // there is no factory yet
    m_log->Clear();
    SaveReference(unlisted.in());
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_FALSE(Alive(0));
    EXPECT_TRUE(elsewhere.Channels()[0].alive);
    EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
    EXPECT_NE(SavedReference(), Reference(unlisted.in()));
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, SavedChannelOfAFactoryWithoutChannelsIsReplaced) {
    BePersistent();
    const EventChannel_var gone = m_service.AddChannel();
    SaveReference(gone.in());
    m_service.Vanish(1);
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(Alive(1));
    EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
}

TEST_F(EventManager, SavedReferenceOfAnotherKindIsReplaced) {
    BePersistent();
    SaveReference(EventChannelFactory_var(m_service.Factory()).in());
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
    EXPECT_EQ(Logged(), Texts{kSavedNil});
}

TEST_F(EventManager, FactoryThatFailsTheVerificationGetsAnotherTry) {
    BePersistent();
    const EventChannel_var saved = m_service.AddChannel();
    SaveReference(saved.in());
    script().On("get_all_channels", [](int call) {
        if (call == 1) {
            throw CORBA::TRANSIENT();
        }
    });
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_FALSE(Alive(0));
    EXPECT_TRUE(m_manager.m_eventChannel->_is_equivalent(EventChannel_var(m_service.Channel(2)).in()));
    EXPECT_EQ(Logged(), Texts{kSavedRaised});
}

TEST_F(EventManager, SavedReferenceToAPeerThatIsGoneIsReplaced) {
    BePersistent();
    m_dir.Write("channel.ior", "corbaloc::127.0.0.1:1/channel");  // its interface has to be asked for
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(Logged(), Texts{kSavedRaised});
    EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
}

TEST_F(EventManager, DamagedFileCountsAsNone) {
    for (const char* contents : {"", "IOR:zz", "nonsense", "IOR:0102"}) {
        BePersistent();
        m_dir.Write("channel.ior", contents);
        EXPECT_EQ(m_manager.Init(), 0) << contents;
        EXPECT_EQ(SavedReference(), Reference(m_manager.m_eventChannel.in()));
    }
}

TEST_F(EventManager, OldChannelThatRefusesToDieDoesNotSaveTheOthers) {
    BePersistent();
    const EventChannel_var first = m_service.AddChannel();
    const EventChannel_var second = m_service.AddChannel();
    script().On("destroy", [](int call) {
        if (call == 1) {
            throw CORBA::NO_PERMISSION();
        }
    });
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(Alive(0));
    EXPECT_FALSE(Alive(1));
    EXPECT_TRUE(Alive(2));
    EXPECT_EQ(Logged(), Texts{kOldRaised});
}

TEST_F(EventManager, NilAmongTheOldChannelsIsPassedOver) {
    BePersistent();
    const EventChannel_var old = m_service.AddChannel();
    script().ReturnNil("get_event_channel");
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(Alive(0));
    EXPECT_EQ(script().Count("destroy"), 0);
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, OldChannelThatCannotBeFetchedEndsTheCreation) {
    BePersistent();
    const EventChannel_var old = m_service.AddChannel();
    script().Raise<ChannelNotFound>("get_event_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(script().Count("create_channel"), 0);
    EXPECT_EQ(Logged(), (Texts{kPersistentRaised, kCreateFailed}));
}

TEST_F(EventManager, FactoryThatCannotBeReachedEndsTheCreation) {
    BePersistent();
    const EventChannel_var saved = m_service.AddChannel();
    SaveReference(saved.in());
    const std::string contents = SavedReference();
    script().Raise<CORBA::COMM_FAILURE>("get_all_channels");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_TRUE(CORBA::is_nil(m_manager.m_eventChannel.in()));
    EXPECT_EQ(SavedReference(), contents);
    EXPECT_EQ(Logged(), (Texts{kSavedRaised, kPersistentRaised, kCreateFailed}));
}

TEST_F(EventManager, PersistentChannelThatCannotBeMadeIsAFailure) {
    BePersistent();
    script().Raise<CosNotification::UnsupportedAdmin>("create_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_FALSE(std::filesystem::exists(m_dir.File("channel.ior")));
    EXPECT_EQ(Logged(), (Texts{kPersistentRaised, kCreateFailed}));
}

TEST_F(EventManager, NilPersistentChannelIsAFailureThatTheFileTells) {
    BePersistent();
    const EventChannel_var saved = m_service.AddChannel();
    SaveReference(saved.in());
    m_service.Vanish(1);
    script().ReturnNil("create_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(SavedReference(), Reference(CORBA::Object::_nil()));
    EXPECT_EQ(Logged(), (Texts{kPersistentNil, kCreateFailed}));
    script().ReturnNil("create_channel", false);
    EXPECT_EQ(m_manager.Init(), 0);  // the nil reference doesn't stand in the way
}

TEST_F(EventManager, ReferenceGoesToItsFixedPlace) {
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(m_manager.CreatePersistentEventChannel("other.ior", m_id, m_channel), 0);
    EXPECT_FALSE(std::filesystem::exists(m_dir.File("other.ior")));
    EXPECT_EQ(SavedReference(), Reference(m_channel.in()));
    std::filesystem::rename(m_dir.File("channel.ior"), m_dir.File("other.ior"));
    m_id = 77;
    EXPECT_EQ(m_manager.CreatePersistentEventChannel("other.ior", m_id, m_channel), 0);
    EXPECT_EQ(m_id, 77);  // taken over: it is the file given that is read
}

TEST_F(EventManager, ReferenceThatCannotBeWrittenIsNoFailure) {
    BePersistent();
    std::filesystem::create_directory(m_dir.File("channel.ior"));
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(Alive(0));
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, NoFileNameCountsAsNoFile) {
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(m_manager.CreatePersistentEventChannel(nullptr, m_id, m_channel), 0);
    EXPECT_EQ(SavedReference(), Reference(m_channel.in()));
}

}  // namespace
}  // namespace qv_test
