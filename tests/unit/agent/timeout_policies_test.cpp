#include <tao/Messaging/Messaging.h>
#include <tao/Policy_CurrentC.h>
#include <tao/Policy_ManagerC.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/agent/interposed.h"

namespace qv_test {
namespace {

using Texts = std::vector<std::string>;

/// Notes what it is told, and raises what the test says.
template <class Manager>
class RecordingManager : public virtual Manager {
  public:
    explicit RecordingManager(Texts& events, bool raises = false) : m_events(events), m_raises(raises) {}

    CORBA::PolicyList* get_policy_overrides(const CORBA::PolicyTypeSeq&) override { return nullptr; }
    void set_policy_overrides(const CORBA::PolicyList& policies, CORBA::SetOverrideType set_add) override {
        if (m_raises) {
            throw CORBA::NO_PERMISSION(7, CORBA::COMPLETED_NO);
        }
        std::string event = set_add == CORBA::SET_OVERRIDE ? "set" : "add";
        for (CORBA::ULong i = 0; i < policies.length(); ++i) {
            const Messaging::RelativeRoundtripTimeoutPolicy_var policy =
                Messaging::RelativeRoundtripTimeoutPolicy::_narrow(policies[i]);
            event += " " + std::to_string(policy->relative_expiry());
        }
        m_events.push_back(event);
    }

  private:
    Texts& m_events;
    const bool m_raises;
};

/// An ORB with one initial reference, whatever the name.
class OrbWithReference : public FakeOrb {
  public:
    OrbWithReference(Texts& events, CORBA::Object_ptr object) : m_events(events), m_object(object) {}

    CORBA::Object_ptr resolve_initial_references(const char* name) override {
        m_events.push_back(name);
        return CORBA::Object::_duplicate(m_object.in());
    }

  private:
    Texts& m_events;
    CORBA::Object_var m_object;
};

/// What the two operations differ in.
struct Level {
    std::string operation;
    bool (NS_CORBA::CorbaBaseAgentConfig::*set)(CORBA::ORB_var&, const unsigned long&);
    std::string reference;
};

const Level kOrbLevel = {"SetORBTimeOutPolicy", &NS_CORBA::CorbaBaseAgentConfig::SetORBTimeOutPolicy,
                         "ORBPolicyManager"};
const Level kThreadLevel = {"SetCurrentThreadTimeOutPolicy",
                            &NS_CORBA::CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy, "PolicyCurrent"};

void PrintTo(const Level& level, std::ostream* out) {
    *out << level.operation;
}

class Timeout : public AgentTest, public ::testing::WithParamInterface<Level> {
  protected:
    ~Timeout() override {
        if (!CORBA::is_nil(m_real.in())) {
            // The thread's timeout outlasts the ORB.
            const CORBA::Object_var object = m_real->resolve_initial_references("PolicyCurrent");
            const CORBA::PolicyCurrent_var current = CORBA::PolicyCurrent::_narrow(object.in());
            current->set_policy_overrides(CORBA::PolicyList(), CORBA::SET_OVERRIDE);
            m_real->destroy();
        }
    }

    bool Set(CORBA::ORB_var& orb, unsigned long timeout) { return (config().*GetParam().set)(orb, timeout); }

    /// Policies can be made only where there is an ORB.
    void NeedOrb() { m_real = MakeOrb(); }

    CORBA::Object_ptr MakeManager(bool raises = false) {
        if (GetParam().reference == "PolicyCurrent") {
            return new RecordingManager<CORBA::PolicyCurrent>(m_events, raises);
        }
        return new RecordingManager<CORBA::PolicyManager>(m_events, raises);
    }
    CORBA::ORB_var Orb(CORBA::Object_ptr object) { return new OrbWithReference(m_events, object); }

    std::string Text(const std::string& text) {
        return "[CorbaBaseAgentConfig::" + GetParam().operation + "] " + text;
    }
    void Expect(const std::string& channel, int level, const std::string& text,
                const std::string& tail = "") {
        ExpectLog(channel, level, "timeout_policies", Text(text) + tail, Text(text));
    }
    int Failures() {
        int count = static_cast<int>(m_log->Entries(kSys).size());
        for (const LogEntry& entry : m_log->Entries(kDebug)) {
            count += entry.level == 1 ? 1 : 0;
        }
        return count;
    }

    Texts m_events;
    CORBA::ORB_var m_real;
};

INSTANTIATE_TEST_SUITE_P(Of, Timeout, ::testing::Values(kOrbLevel, kThreadLevel),
                         [](const auto& test) { return test.param.reference; });

TEST_P(Timeout, NullOrbIsRefused) {
    CORBA::ORB_var orb;
    EXPECT_FALSE(Set(orb, 5));
    Expect(kDebug, 1, "input orb is null");
    EXPECT_TRUE(CORBA::is_nil(orb.in()));
    EXPECT_FALSE(m_log->Contains(kDebug, "Time out info"));
    EXPECT_EQ(1, Failures());
}

TEST_P(Timeout, TheValueReplacesAllOverridesUnchanged) {
    NeedOrb();
    for (const unsigned long value : {0ul, 1ul, 864000000000ul, ~0ul}) {
        m_events.clear();
        m_log->Clear();
        CORBA::ORB_var orb = Orb(MakeManager());
        EXPECT_TRUE(Set(orb, value));
        EXPECT_EQ((Texts{GetParam().reference, "set " + std::to_string(value)}), m_events);
        EXPECT_EQ(1, CountLog(kDebug, Text("Time out info - ullTimeOut=" + std::to_string(value))));
        EXPECT_EQ(0, Failures());
    }
}

/// Notes when it is destroyed.
class NotingPolicy : public Messaging::RelativeRoundtripTimeoutPolicy {
  public:
    NotingPolicy(Texts& events, TimeBase::TimeT expiry)
        : Messaging::RelativeRoundtripTimeoutPolicy(expiry), m_events(events) {}
    void destroy() override { m_events.push_back("destroyed"); }

  private:
    Texts& m_events;
};

TEST_P(Timeout, ThePolicyIsDestroyedOnceItIsSet) {
    NeedOrb();
    const ReplacedCreatePolicy replaced(
        [this](CORBA::PolicyType, const CORBA::Any&) { return new NotingPolicy(m_events, 77); });
    CORBA::ORB_var orb = Orb(MakeManager());
    EXPECT_TRUE(Set(orb, 5));
    EXPECT_EQ((Texts{GetParam().reference, "set 77", "destroyed"}), m_events);
}

TEST_P(Timeout, IsTracedAndTold) {
    NeedOrb();
    CORBA::ORB_var orb = Orb(MakeManager());
    EXPECT_TRUE(Set(orb, 42));
    ExpectLog(kDebug, 3, "timeout_policies", Text("Time out info - ullTimeOut=42"),
              Text("Time out info - %s"));
    const std::vector<LogEntry> entries = m_log->Entries(kDebug);
    ASSERT_EQ(3u, entries.size());
    EXPECT_NE(std::string::npos, entries.front().text.find("CorbaBaseAgentConfig::" + GetParam().operation));
    EXPECT_NE(std::string::npos, entries.back().text.find("CorbaBaseAgentConfig::" + GetParam().operation));
}

TEST_P(Timeout, NoManager) {
    NeedOrb();
    CORBA::ORB_var orb = Orb(CORBA::Object::_nil());
    EXPECT_FALSE(Set(orb, 5));
    Expect(kDebug, 1, "Get " + GetParam().reference + " object is null");
    EXPECT_EQ(1, Failures());
}

TEST_P(Timeout, SomethingElseInTheManagersPlace) {
    NeedOrb();
    CORBA::ORB_var orb = Orb(m_real->resolve_initial_references("PICurrent"));
    EXPECT_FALSE(Set(orb, 5));
    if (GetParam().reference == "ORBPolicyManager") {
        Expect(kSys, -1, "Get ORBPolicyManager object of ORB failed!");
    } else {
        ExpectLog(kDebug, 1, "timeout_policies", Text("Get PolicyCurrent object of current thread failed!"),
                  "Get PolicyCurrent object of current");
    }
    EXPECT_EQ(1, Failures());
}

TEST_P(Timeout, AnExceptionOfTheManagerGoesNoFurther) {
    NeedOrb();
    CORBA::ORB_var orb = Orb(MakeManager(true));
    EXPECT_FALSE(Set(orb, 5));
    ExpectLogPrefix(kDebug, 1, "timeout_policies",
                    Text("catch exception<system exception, ID 'IDL:omg.org/CORBA/NO_PERMISSION:1.0'"),
                    Text("catch exception"));
    EXPECT_EQ(1, Failures());
}

TEST_P(Timeout, ThePolicyIsMadeBeforeOrAfterTheManagerIsFound) {
    // Without an ORB in the process no policy can be made, so what was resolved tells the order.
    CORBA::ORB_var orb = Orb(MakeManager());
    EXPECT_FALSE(Set(orb, 5));
    ExpectLogPrefix(kDebug, 1, "timeout_policies", Text("catch exception<user exception"),
                    Text("catch exception"));
    const bool resolved_first = GetParam().reference == "ORBPolicyManager";
    EXPECT_EQ(resolved_first ? Texts{GetParam().reference} : Texts{}, m_events);
}

TEST_P(Timeout, HoldsForRealCalls) {
    NeedOrb();
    EXPECT_TRUE(Set(m_real, 5000000));  // half a second
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), size));
    ASSERT_EQ(0, listen(listener, 5));
    ASSERT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size));
    const std::string reference = "corbaloc::127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/x";
    const CORBA::Object_var object = m_real->string_to_object(reference.c_str());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THROW(object->_non_existent(), CORBA::TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(498));
    close(listener);
}

TEST_F(AgentTest, TheLongestTimeoutIsADay) {
    EXPECT_EQ(864000000000ul, config().GetMaxNanoSecondForTimeOut());
}

}  // namespace
}  // namespace qv_test
