// The relative round-trip timeout: its policy, its two managers, and calls that it ends.

#include <gtest/gtest.h>
#include <tao/Messaging/Messaging.h>
#include <tao/Policy_CurrentC.h>
#include <tao/Policy_ManagerC.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "seam_server.h"
#include "silent_peer.h"

namespace {

using namespace qv_test;
using Clock = std::chrono::steady_clock;
using Millis = std::chrono::milliseconds;

constexpr TimeBase::TimeT kSecond = 10000000;  // in units of 100 nanoseconds

class TimeoutsTest : public ::testing::Test {
  protected:
    TimeoutsTest() : m_orb(InitOrb({})) {}
    ~TimeoutsTest() override {
        Set(*Current(), {});
        m_orb->destroy();
    }

    CORBA::Policy_ptr Timeout(TimeBase::TimeT expiry) {
        CORBA::Any value;
        value <<= expiry;
        return m_orb->create_policy(Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE, value);
    }

    void Set(CORBA::PolicyManager& manager, const std::vector<TimeBase::TimeT>& expiries,
             CORBA::SetOverrideType set_add = CORBA::SET_OVERRIDE) {
        CORBA::PolicyList list;
        list.length(static_cast<CORBA::ULong>(expiries.size()));
        for (CORBA::ULong i = 0; i < list.length(); ++i) {
            list[i] = Timeout(expiries[i]);
        }
        manager.set_policy_overrides(list, set_add);
        for (CORBA::ULong i = 0; i < list.length(); ++i) {
            list[i]->destroy();
        }
    }

    /// The expiry that is set, -1 when none is.
    long long Get(CORBA::PolicyManager& manager, const std::vector<CORBA::PolicyType>& types = {}) {
        CORBA::PolicyTypeSeq asked;
        asked.length(static_cast<CORBA::ULong>(types.size()));
        for (CORBA::ULong i = 0; i < asked.length(); ++i) {
            asked[i] = types[i];
        }
        CORBA::PolicyList_var list = manager.get_policy_overrides(asked);
        if (list->length() == 0) {
            return -1;
        }
        EXPECT_EQ(1u, list->length());
        const Messaging::RelativeRoundtripTimeoutPolicy_var policy =
            Messaging::RelativeRoundtripTimeoutPolicy::_narrow(list.in()[0]);
        return static_cast<long long>(policy->relative_expiry());
    }

    CORBA::PolicyManager_var Manager() {
        const CORBA::Object_var object = m_orb->resolve_initial_references("ORBPolicyManager");
        return CORBA::PolicyManager::_narrow(object.in());
    }
    CORBA::PolicyCurrent_var Current() {
        const CORBA::Object_var object = m_orb->resolve_initial_references("PolicyCurrent");
        return CORBA::PolicyCurrent::_narrow(object.in());
    }

    /// Calls the peer and waits; fails unless the call raises TIMEOUT.
    Millis Call(const SilentPeer& peer) {
        const CORBA::Object_var object = m_orb->string_to_object(peer.Reference().c_str());
        const Clock::time_point begin = Clock::now();
        EXPECT_THROW(object->_non_existent(), CORBA::TIMEOUT);
        return std::chrono::duration_cast<Millis>(Clock::now() - begin);
    }

    CORBA::ORB_var m_orb;
    SilentPeer m_peer;
};

constexpr Millis kAsked{1500};
constexpr TimeBase::TimeT kAskedExpiry = kSecond * 3 / 2;

void ExpectWithinTenPercent(Millis asked, Millis taken) {
    EXPECT_GE(taken.count(), asked.count() - 2);  // the ORB counts on another clock
    EXPECT_LE(taken.count(), asked.count() * 11 / 10);
}

TEST_F(TimeoutsTest, ThePolicyKeepsItsValue) {
    for (const TimeBase::TimeT expiry :
         {TimeBase::TimeT{0}, TimeBase::TimeT{1}, TimeBase::TimeT{864000000000}, ~TimeBase::TimeT{0}}) {
        const CORBA::Policy_var policy = Timeout(expiry);
        EXPECT_EQ(32u, policy->policy_type());
        const CORBA::Policy_var copy = policy->copy();
        policy->destroy();
        const Messaging::RelativeRoundtripTimeoutPolicy_var timeout =
            Messaging::RelativeRoundtripTimeoutPolicy::_narrow(copy.in());
        ASSERT_FALSE(CORBA::is_nil(timeout.in()));
        EXPECT_EQ(expiry, timeout->relative_expiry());
    }
}

TEST_F(TimeoutsTest, ThePolicyIsMadeOfNothingElse) {
    CORBA::Any value;
    value <<= "soon";
    try {
        CORBA::Policy_var policy = m_orb->create_policy(Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE, value);
        FAIL();
    } catch (const CORBA::PolicyError& error) {
        EXPECT_EQ(CORBA::BAD_POLICY_TYPE, error.reason);
    }
    value <<= kSecond;
    try {
        CORBA::Policy_var policy = m_orb->create_policy(31, value);  // the relative request timeout
        FAIL();
    } catch (const CORBA::PolicyError& error) {
        EXPECT_EQ(CORBA::BAD_POLICY, error.reason);
    }
}

TEST_F(TimeoutsTest, OverridesAreAddedAndReplaced) {
    const CORBA::PolicyManager_var manager = Manager();
    const CORBA::PolicyCurrent_var current = Current();
    for (CORBA::PolicyManager* const level : {static_cast<CORBA::PolicyManager*>(manager.in()),
                                              static_cast<CORBA::PolicyManager*>(current.in())}) {
        EXPECT_EQ(-1, Get(*level));
        Set(*level, {5}, CORBA::ADD_OVERRIDE);
        EXPECT_EQ(5, Get(*level));
        Set(*level, {}, CORBA::ADD_OVERRIDE);
        EXPECT_EQ(5, Get(*level));
        Set(*level, {7}, CORBA::ADD_OVERRIDE);
        EXPECT_EQ(7, Get(*level));
        Set(*level, {0});
        EXPECT_EQ(0, Get(*level));
        EXPECT_EQ(0, Get(*level, {31, 32}));
        EXPECT_EQ(-1, Get(*level, {31}));
        Set(*level, {});
        EXPECT_EQ(-1, Get(*level));
    }
}

TEST_F(TimeoutsTest, ABadListChangesNothing) {
    const CORBA::PolicyManager_var manager = Manager();
    Set(*manager, {5});
    EXPECT_THROW(Set(*manager, {6, 6}), CORBA::BAD_PARAM);
    CORBA::PolicyList list;
    list.length(1);
    EXPECT_THROW(manager->set_policy_overrides(list, CORBA::SET_OVERRIDE), CORBA::BAD_PARAM);
    CORBA::Any value;
    value <<= PortableServer::PERSISTENT;
    list[0] = m_orb->create_policy(PortableServer::LIFESPAN_POLICY_ID, value);
    EXPECT_THROW(manager->set_policy_overrides(list, CORBA::SET_OVERRIDE), CORBA::NO_PERMISSION);
    EXPECT_EQ(5, Get(*manager));
}

TEST_F(TimeoutsTest, ACurrentIsAManagerButNotTheOtherWayRound) {
    const CORBA::Object_var manager = m_orb->resolve_initial_references("ORBPolicyManager");
    const CORBA::PolicyCurrent_var current = CORBA::PolicyCurrent::_narrow(manager.in());
    EXPECT_TRUE(CORBA::is_nil(current.in()));
    const CORBA::Object_var object = m_orb->resolve_initial_references("PolicyCurrent");
    const CORBA::PolicyManager_var base = CORBA::PolicyManager::_narrow(object.in());
    EXPECT_FALSE(CORBA::is_nil(base.in()));
}

TEST_F(TimeoutsTest, TheOrbsTimeoutEndsACallOfAnyThread) {
    Set(*Manager(), {kAskedExpiry});
    ExpectWithinTenPercent(kAsked, Call(m_peer));
    ExpectWithinTenPercent(kAsked, std::async(std::launch::async, [this] { return Call(m_peer); }).get());
}

TEST_F(TimeoutsTest, ItEndsACallThatNeverGetsAConnection) {
    m_peer.Fill();
    Set(*Manager(), {kAskedExpiry});
    ExpectWithinTenPercent(kAsked, Call(m_peer));
}

TEST_F(TimeoutsTest, AThreadsTimeoutWinsOverTheOrbsAndBindsNoOtherThread) {
    Set(*Manager(), {10 * kAskedExpiry});
    auto other_peer = std::make_unique<SilentPeer>();
    const std::string reference = other_peer->Reference();
    std::atomic<bool> ended{false};
    std::thread other([&] {
        const CORBA::Object_var object = m_orb->string_to_object(reference.c_str());
        EXPECT_THROW(object->_non_existent(), CORBA::SystemException);
        ended = true;
    });
    ExpectWithinTenPercent(kAsked, std::async(std::launch::async, [this] {
                                       Set(*Current(), {kAskedExpiry});
                                       return Call(m_peer);
                                   }).get());
    EXPECT_FALSE(ended);
    EXPECT_EQ(-1, Get(*Current()));
    Set(*Current(), {kAskedExpiry});
    ExpectWithinTenPercent(kAsked, Call(m_peer));
    EXPECT_FALSE(ended);
    other_peer.reset();  // the connection is gone
    other.join();
}

TEST_F(TimeoutsTest, ANewValueReplacesTheFormerOne) {
    Set(*Manager(), {100 * kSecond});
    Set(*Manager(), {kAskedExpiry});
    ExpectWithinTenPercent(kAsked, Call(m_peer));
    Set(*Current(), {100 * kSecond});
    Set(*Current(), {2 * kSecond});
    ExpectWithinTenPercent(Millis(2000), Call(m_peer));
    Set(*Current(), {});  // the ORB's holds again
    ExpectWithinTenPercent(kAsked, Call(m_peer));
}

TEST_F(TimeoutsTest, ZeroBoundsNothingOnItsLevelNorBelow) {
    Set(*Manager(), {kSecond / 10});
    std::atomic<bool> ended{false};
    auto peer = std::make_unique<SilentPeer>();
    const std::string reference = peer->Reference();
    std::thread patient([&] {
        Set(*Current(), {0});
        const CORBA::Object_var object = m_orb->string_to_object(reference.c_str());
        EXPECT_THROW(object->_non_existent(), CORBA::SystemException);
        ended = true;
    });
    for (int i = 0; i < 10; ++i) {
        Call(m_peer);  // ten times the ORB's timeout
    }
    EXPECT_FALSE(ended);
    peer.reset();
    patient.join();
}

TEST_F(TimeoutsTest, TheNextOrbStartsWithoutOne) {
    Set(*Manager(), {kSecond / 10});
    m_orb->destroy();
    m_orb = InitOrb({});
    EXPECT_EQ(-1, Get(*Manager()));
    auto peer = std::make_unique<SilentPeer>();
    const std::string reference = peer->Reference();
    std::atomic<bool> ended{false};
    std::thread patient([&] {
        const CORBA::Object_var object = m_orb->string_to_object(reference.c_str());
        EXPECT_THROW(object->_non_existent(), CORBA::SystemException);
        ended = true;
    });
    Set(*Current(), {kSecond});
    Call(m_peer);
    EXPECT_FALSE(ended);
    peer.reset();
    patient.join();
}

}  // namespace
