// The agent's channel, call by call, against a notification service that does as it is told: what transient
// and persistent channels share, and transient ones.
#include <tao/TimeBaseC.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "tests/unit/notification/eventmgr_fixture.h"

namespace qv_test {
namespace {

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
constexpr char kCreateRaised[] = "[EventMgr::Init] Exception raised during CreateChannel!";
constexpr char kTransientNil[] =
    "[EventMgr::CreateTransientEventChannel] Create notification event channel failed!";
constexpr char kTransientRaised[] =
    "[EventMgr::CreateTransientEventChannel] Exception raised during creating notification channel!";
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
