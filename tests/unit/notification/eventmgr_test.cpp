// The agent's channel, call by call, against a notification service that does as it is told.
#include "notification/eventmgr.h"

#include <tao/TimeBaseC.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/notification/fake_channel.h"

namespace NS_CORBA {

/// Opens the event manager where no operation leads.
class EventMgrProbe {
  public:
    static auto& Factory(EventMgr& manager) { return manager.m_channelFactory; }
    static bool Ready(const EventMgr& manager) { return manager.m_bReady; }
};

}  // namespace NS_CORBA

namespace qv_test {
namespace {

using namespace CosNotifyChannelAdmin;
using NS_CORBA::EventMgr;
using NS_CORBA::EventMgrProbe;
using Texts = std::vector<std::string>;

/// The process's directory, where "channel.ior" lies.
class ScopedDirectory {
  public:
    explicit ScopedDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    ~ScopedDirectory() { std::filesystem::current_path(m_former); }

  private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

class EventManager : public AgentTest {
  protected:
    EventManager() { UseFactory(m_service.Factory()); }

    /// The agent finds this object when it asks for the factory.
    void UseFactory(CORBA::Object_ptr object) {
        const CORBA::Object_var factory = object;
        const CORBA::String_var ior = m_orb->object_to_string(object);
        std::string option = "-nt" + m_dir.Write("nt.ior", ior.in());
        char* argv[] = {option.data(), nullptr};
        int argc = 1;
        config().parse_args(argc, argv);
    }
    void BePersistent() {
        m_items.Set("PersistenceEventChannel", "1");
        config().GetOption();
        ASSERT_TRUE(config().PersistentEventChannel());
    }
    void SaveReference(CORBA::Object_ptr object) {
        m_dir.Write("channel.ior", CORBA::String_var(m_orb->object_to_string(object)).in());
    }
    std::string SavedReference() { return ReadFile(m_dir.File("channel.ior")); }
    std::string Reference(CORBA::Object_ptr object) {
        return CORBA::String_var(m_orb->object_to_string(object)).in();
    }

    /// What the event manager logged, in order: texts of the system channel as they are, exceptions as the
    /// text given to TaException.
    Texts Logged() {
        Texts texts;
        for (const LogEntry& entry : m_log->Entries()) {
            if (entry.file != "eventmgr") {
                continue;
            }
            EXPECT_EQ(entry.function, "unknown");
            EXPECT_GT(entry.line, 0);
            EXPECT_EQ(entry.level, entry.category == kDebug ? 1 : -1) << entry.text;
            texts.push_back(entry.category == kDebug ? TextOfException(entry.text) : entry.text);
        }
        return texts;
    }
    static std::string TextOfException(const std::string& text) {
        const std::size_t end = text.find("==>");
        EXPECT_EQ(text.find("Exception: "), 0u) << text;
        EXPECT_NE(text.find("IDL:", end), std::string::npos) << text;
        return text.substr(11, end - 11);
    }

    bool Alive(std::size_t channel) { return m_service.Channels().at(channel).alive; }
    Texts Calls() { return m_service.script().Calls(); }
    NotifyScript& script() { return m_service.script(); }

    CORBA::ORB_var m_orb = MakeOrb();
    FakeNotifyService m_service{m_orb.in()};
    EventMgr m_manager;
    int m_id = 77;
    EventMgr::ChannelVar m_channel;

  private:
    ScopedDirectory m_directory{m_dir.path()};
};

/// Name, and type and value of a property, as text.
std::string PropertyText(const CosNotification::Property& property) {
    std::string text = std::string(property.name.in()) + " ";
    CORBA::Short number = 0;
    TimeBase::TimeT span = 0;
    CORBA::Boolean flag = false;
    if (property.value >>= number) {
        return text + "short " + std::to_string(number);
    }
    if (property.value >>= span) {
        return text + "TimeT " + std::to_string(span);
    }
    if (property.value >>= CORBA::Any::to_boolean(flag)) {
        return text + "boolean " + std::to_string(flag);
    }
    return text + "?";
}

Texts PropertyTexts(const CosNotification::PropertySeq& properties) {
    Texts texts;
    for (CORBA::ULong i = 0; i < properties.length(); ++i) {
        texts.push_back(PropertyText(properties[i]));
    }
    return texts;
}

constexpr char kDestroyFirst[] = "[EventMgr::Init] Destroy out of date EventChannel at first!";
constexpr char kDestroyRaised[] = "[EventMgr::Init] Exception raised during destroying eventchannel!";
constexpr char kCreateFailed[] = "[EventMgr::Init] CreateChannel failed!";
constexpr char kCreateRaised[] = "[EventMgr::Init] Exception raised during CreateChannel!";
constexpr char kTransientNil[] =
    "[EventMgr::CreateTransientEventChannel] Create notification event channel failed!";
constexpr char kTransientRaised[] =
    "[EventMgr::CreateTransientEventChannel] Exception raised during creating notification channel!";
constexpr char kSavedNil[] = "[EventMgr::CreatePersistentEventChannel] Event channel is NULL!";
constexpr char kSavedRaised[] =
    "[EventMgr::CreatePersistentEventChannel]:Exception rasied during _narrow operation, the eventchannle "
    "will "
    "recreated!";
constexpr char kOldRaised[] = "[EventMgr::CreatePersistentEventChannel] Destory old event channel failed!";
constexpr char kPersistentNil[] =
    "[EventMgr::CreatePersistentEventChannel] Create notification event channel failed!";
constexpr char kPersistentRaised[] =
    "[EventMgr::CreatePersistentEventChannel] Exception raised during creating notification channel!";

TEST_F(EventManager, HoldsNothingAtFirst) {
    EXPECT_TRUE(CORBA::is_nil(m_manager.m_eventChannel.in()));
    EXPECT_TRUE(CORBA::is_nil(EventMgrProbe::Factory(m_manager).in()));
    EXPECT_FALSE(EventMgrProbe::Ready(m_manager));
}

TEST_F(EventManager, TransientChannelHasFourPropertiesOfQuality) {
    EXPECT_EQ(m_manager.Init(), 0);
    ASSERT_EQ(m_service.Channels().size(), 1u);
    EXPECT_EQ(PropertyTexts(m_service.Channels()[0].qos),
              (Texts{"OrderPolicy short 1", "DiscardPolicy short 1", "EventReliability short 0",
                     "PacingInterval TimeT 0"}));
    EXPECT_EQ(PropertyTexts(m_service.Channels()[0].admin), Texts{"RejectNewEvents boolean 1"});
    EXPECT_TRUE(m_manager.m_eventChannel->_is_equivalent(EventChannel_var(m_service.Channel(1)).in()));
    EXPECT_EQ(Calls(), Texts{"create_channel"});
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, PersistentChannelHasFivePropertiesOfQuality) {
    BePersistent();
    EXPECT_EQ(m_manager.Init(), 0);
    ASSERT_EQ(m_service.Channels().size(), 1u);
    EXPECT_EQ(PropertyTexts(m_service.Channels()[0].qos),
              (Texts{"OrderPolicy short 1", "DiscardPolicy short 1", "EventReliability short 1",
                     "ConnectionReliability short 1", "PacingInterval TimeT 0"}));
    EXPECT_EQ(PropertyTexts(m_service.Channels()[0].admin), Texts{"RejectNewEvents boolean 1"});
    EXPECT_EQ(Logged(), Texts());
}

TEST_F(EventManager, WithoutAFactoryTheChannelStays) {
    ASSERT_EQ(m_manager.Init(), 0);
    const std::string before = Reference(m_manager.m_eventChannel.in());
    config().SetOrb(CORBA::ORB::_nil());
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(Logged(), Texts{"[EventMgr::Init] GetNotifyFactory failed!"});
    EXPECT_EQ(Reference(m_manager.m_eventChannel.in()), before);
    EXPECT_TRUE(CORBA::is_nil(EventMgrProbe::Factory(m_manager).in()));
    EXPECT_TRUE(Alive(0));
    config().SetOrb(m_orb.in());  // which is destroyed at the end of a test
}

TEST_F(EventManager, FactoryThatIsNoneIsAFailure) {
    UseFactory(EventChannel_ptr(m_service.AddChannel()));  // found, but of another interface
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(Logged(), (Texts{kTransientRaised, kCreateFailed}));
    BePersistent();
    m_log->Clear();
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(Logged(), (Texts{kPersistentRaised, kCreateFailed}));
}

// -- Transient channels -------------------------------------------------------------------------------------

TEST_F(EventManager, ReinitialisationDestroysTheTransientChannelFirst) {
    ASSERT_EQ(m_manager.Init(), 0);
    script().ClearCalls();
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(Calls(), (Texts{"destroy", "create_channel"}));
    EXPECT_FALSE(Alive(0));
    EXPECT_TRUE(Alive(1));
    EXPECT_TRUE(m_manager.m_eventChannel->_is_equivalent(EventChannel_var(m_service.Channel(2)).in()));
    EXPECT_EQ(Logged(), Texts{kDestroyFirst});
}

TEST_F(EventManager, ReinitialisationGoesOnWhenTheChannelCannotBeDestroyed) {
    ASSERT_EQ(m_manager.Init(), 0);
    script().Raise<CORBA::TRANSIENT>("destroy");
    EXPECT_EQ(m_manager.Init(), 0);
    EXPECT_TRUE(m_manager.m_eventChannel->_is_equivalent(EventChannel_var(m_service.Channel(2)).in()));
    EXPECT_EQ(Logged(), (Texts{kDestroyFirst, kDestroyRaised}));
}

TEST_F(EventManager, ReinitialisationThatFailsKeepsTheDestroyedChannel) {
    ASSERT_EQ(m_manager.Init(), 0);
    const std::string before = Reference(m_manager.m_eventChannel.in());
    script().Raise<CORBA::NO_RESOURCES>("create_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(Reference(m_manager.m_eventChannel.in()), before);
    EXPECT_FALSE(Alive(0));
    EXPECT_EQ(Logged(), (Texts{kDestroyFirst, kTransientRaised, kCreateFailed}));
}

TEST_F(EventManager, UserExceptionIsAFailureLikeAnyOther) {
    script().Raise<CosNotification::UnsupportedQoS>("create_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_EQ(Logged(), (Texts{kTransientRaised, kCreateFailed}));
}

TEST_F(EventManager, NilChannelIsAFailure) {
    script().ReturnNil("create_channel");
    EXPECT_EQ(m_manager.Init(), -1);
    EXPECT_TRUE(CORBA::is_nil(m_manager.m_eventChannel.in()));
    EXPECT_EQ(Logged(), (Texts{kTransientNil, kCreateFailed}));
}

TEST_F(EventManager, CorbaExceptionThatGetsOutOfTheCreationIsAFailure) {
    script().ReturnNil("create_channel");
    m_log->SetWriteHook([](const LogEntry& entry) {
        if (entry.text == kTransientNil) {
            throw CORBA::NO_MEMORY();
        }
    });
    EXPECT_EQ(m_manager.Init(), -1);
    m_log->SetWriteHook({});
    EXPECT_EQ(Logged().back(), kCreateRaised);
}

TEST_F(EventManager, OtherExceptionsPassToTheCaller) {
    ASSERT_EQ(m_manager.Init(), 0);
    const std::string before = Reference(m_manager.m_eventChannel.in());
    script().On("create_channel", [](int) { throw CORBA::TRANSIENT(); });
    m_log->SetWriteHook([](const LogEntry& entry) {
        if (entry.text == kDestroyFirst) {
            throw std::runtime_error("disk full");
        }
    });
    EXPECT_THROW(m_manager.Init(), std::runtime_error);
    EXPECT_EQ(Reference(m_manager.m_eventChannel.in()), before);
    m_log->SetWriteHook({});
}

TEST_F(EventManager, IdAndChannelComeBack) {
    ASSERT_EQ(m_manager.Init(), 0);
    EXPECT_EQ(m_manager.CreateTransientEventChannel(m_id, m_channel), 0);
    EXPECT_EQ(m_id, 2);
    EXPECT_TRUE(m_channel->_is_equivalent(EventChannel_var(m_service.Channel(2)).in()));
    EXPECT_EQ(m_manager.CreateChannel(m_id, m_channel), 0);
    EXPECT_EQ(m_id, 3);
    BePersistent();
    EXPECT_EQ(m_manager.CreateChannel(m_id, m_channel), 0);
    EXPECT_EQ(m_id, 4);
    EXPECT_FALSE(SavedReference().empty());
}

TEST_F(EventManager, CreationWithoutInitIsAFailure) {
    EXPECT_EQ(m_manager.CreateTransientEventChannel(m_id, m_channel), -1);
    EXPECT_EQ(m_manager.CreatePersistentEventChannel("channel.ior", m_id, m_channel), -1);
    EXPECT_EQ(m_id, 77);
    EXPECT_EQ(Logged(), (Texts{kTransientRaised, kPersistentRaised}));
}

// -- Persistent channels ------------------------------------------------------------------------------------

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

// -- The instance -------------------------------------------------------------------------------------------

TEST_F(EventManager, DestructionLeavesTheChannelAlive) {
    EventMgr::Instance()->Init();
    EventMgr::Destroy();
    EXPECT_EQ(EventMgr::m_pInstance, nullptr);
    EventMgr::Destroy();
    EXPECT_TRUE(Alive(0));
    EXPECT_EQ(script().Count("destroy"), 0);
}

TEST_F(EventManager, ThreadsGetOneInstance) {
    std::atomic<EventMgr*> found[4] = {};
    std::vector<std::thread> threads;
    for (auto& place : found) {
        threads.emplace_back([&place] { place = EventMgr::Instance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& place : found) {
        EXPECT_NE(place.load(), nullptr);
        EXPECT_EQ(place.load(), EventMgr::m_pInstance);
    }
    EventMgr::Destroy();
}

}  // namespace
}  // namespace qv_test
