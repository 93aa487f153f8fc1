#include "agent/persistent_poa.h"

#include "tests/support/free_port.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_poa.h"
#include "tests/unit/agent/plain_servant.h"

namespace qv_test {
namespace {

using NS_CORBA::get_persistent_poa;
using NS_CORBA::get_persistent_ref;

class PersistentPoa : public AgentTest {
  protected:
    PersistentPoa() { Start(FreePort()); }

    void Start(int port) {
        m_port = port;
        m_orb = MakeOrb({"-ORBEndpoint", "iiop://127.0.0.1:" + std::to_string(port)});
        CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
        m_root = PortableServer::POA::_narrow(object.in());
        PortableServer::POAManager_var(m_root->the_POAManager())->activate();
    }

    std::string Ior(CORBA::Object_ptr object) {
        return CORBA::String_var(m_orb->object_to_string(object)).in();
    }

    int m_port = 0;
    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_root;
};

TEST_F(PersistentPoa, ChildServesUnderItsParentsManager) {
    PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
    ASSERT_FALSE(CORBA::is_nil(child.in()));
    EXPECT_STREQ("child", CORBA::String_var(child->the_name()).in());
    EXPECT_TRUE(PortableServer::POAManager_var(child->the_POAManager())
                    ->_is_equivalent(PortableServer::POAManager_var(m_root->the_POAManager()).in()));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[get_persistent_poa] Entering..."));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[get_persistent_poa] Leaved!"));
}

TEST_F(PersistentPoa, NameInUseGivesThePoaThatHasIt) {
    PortableServer::POA_var first = get_persistent_poa(m_root.in(), "child");
    PortableServer::POA_var second = get_persistent_poa(m_root.in(), "child");
    ASSERT_FALSE(CORBA::is_nil(second.in()));
    EXPECT_TRUE(first->_is_equivalent(second.in()));
    ExpectLog(kSys, -1, "persistent_poa",
              "Exception<PortableServer::POA::AdapterAlreadyExists> raised during get_persistent_poa: child!",
              "raised during get_persistent_poa: %s!");
}

TEST_F(PersistentPoa, PoliciesOfAnExistingPoaAreNotLookedAt) {
    PortableServer::POA_var transient =
        m_root->create_POA("child", PortableServer::POAManager::_nil(), CORBA::PolicyList());
    PortableServer::POA_var taken = get_persistent_poa(m_root.in(), "child");
    EXPECT_TRUE(transient->_is_equivalent(taken.in()));
}

TEST_F(PersistentPoa, ParentThatRaisesGivesNil) {
    PortableServer::POA_var gone = get_persistent_poa(m_root.in(), "gone");
    gone->destroy(true, true);
    PortableServer::POA_var child = get_persistent_poa(gone.in(), "child");
    EXPECT_TRUE(CORBA::is_nil(child.in()));
    ExpectExceptionLog("persistent_poa", "Raised during get_persistent_poa!");
}

/// Has every child while one is to be made, and none when it is looked up.
class ForgetfulPoa : public FakePoa {
  public:
    PortableServer::POAManager* the_POAManager() override { return PortableServer::POAManager::_nil(); }
    POA* create_POA(const char*, PortableServer::POAManager*, const CORBA::PolicyList&) override {
        throw AdapterAlreadyExists();
    }
    POA* find_POA(const char*, CORBA::Boolean) override { throw AdapterNonExistent(); }
};

TEST_F(PersistentPoa, ExistingChildThatIsGoneWhenItIsLookedUpGivesNil) {
    PortableServer::POA_var parent = new ForgetfulPoa;
    PortableServer::POA_var child = get_persistent_poa(parent.in(), "child");
    EXPECT_TRUE(CORBA::is_nil(child.in()));
    EXPECT_TRUE(m_log->Contains(kSys, "raised during get_persistent_poa: child!"));
    ExpectExceptionLog("persistent_poa", "Raised during get_persistent_poa!");
}

TEST_F(PersistentPoa, ServantIsCalledThroughItsReference) {
    PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
    PlainServant* servant = new PlainServant;
    PortableServer::ServantBase_var owner(servant);
    CORBA::Object_var object = get_persistent_ref(child.in(), servant, "plain");
    QvAgentTest::Plain_var plain = QvAgentTest::Plain::_narrow(object.in());
    ASSERT_FALSE(CORBA::is_nil(plain.in()));
    EXPECT_STREQ("hello", CORBA::String_var(plain->Echo("hello")).in());
    PortableServer::ObjectId_var id = child->reference_to_id(object.in());
    EXPECT_STREQ("plain", CORBA::String_var(PortableServer::ObjectId_to_string(id.in())).in());
    EXPECT_TRUE(m_log->Contains(kDebug, "===[get_persistent_ref] Entering..."));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[get_persistent_ref] Leaved!"));
}

TEST_F(PersistentPoa, SameIdAgainGivesTheSameReference) {
    PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
    PlainServant* servant = new PlainServant;
    PortableServer::ServantBase_var owner(servant);
    CORBA::Object_var first = get_persistent_ref(child.in(), servant, "plain");
    CORBA::Object_var second = get_persistent_ref(child.in(), servant, "plain");
    ASSERT_FALSE(CORBA::is_nil(second.in()));
    EXPECT_EQ(Ior(first.in()), Ior(second.in()));
    EXPECT_FALSE(m_log->Contains(kDebug, "Exception: "));
}

TEST_F(PersistentPoa, IdOfAnotherServantGivesThatOnesReference) {
    PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
    PlainServant* first = new PlainServant;
    PortableServer::ServantBase_var firstOwner(first);
    PlainServant* second = new PlainServant;
    PortableServer::ServantBase_var secondOwner(second);
    CORBA::Object_var object = get_persistent_ref(child.in(), first, "plain");
    CORBA::Object_var again = get_persistent_ref(child.in(), second, "plain");
    EXPECT_EQ(Ior(object.in()), Ior(again.in()));
}

TEST_F(PersistentPoa, ServantActiveUnderAnotherIdFails) {
    // Unique ids: the servant counts as activated, but the id that was asked for is not.
    CORBA::PolicyList policies;
    policies.length(2);
    policies[0] = m_root->create_id_assignment_policy(PortableServer::USER_ID);
    policies[1] = m_root->create_id_uniqueness_policy(PortableServer::UNIQUE_ID);
    PortableServer::POA_var unique =
        m_root->create_POA("unique", PortableServer::POAManager::_nil(), policies);
    PlainServant* servant = new PlainServant;
    PortableServer::ServantBase_var owner(servant);
    CORBA::Object_var first = get_persistent_ref(unique.in(), servant, "one");
    ASSERT_FALSE(CORBA::is_nil(first.in()));
    CORBA::Object_var second = get_persistent_ref(unique.in(), servant, "two");
    EXPECT_TRUE(CORBA::is_nil(second.in()));
    ExpectExceptionLog("persistent_poa", "Raised during id_to_reference!");
}

TEST_F(PersistentPoa, PoaThatAssignsIdsItselfFails) {
    PlainServant* servant = new PlainServant;
    PortableServer::ServantBase_var owner(servant);
    CORBA::Object_var object = get_persistent_ref(m_root.in(), servant, "plain");
    EXPECT_TRUE(CORBA::is_nil(object.in()));
    ExpectExceptionLog("persistent_poa", "Raised during get_persistent_ref!");
}

TEST_F(PersistentPoa, ReferenceOutlivesARestart) {
    std::string before;
    {
        PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
        PlainServant* servant = new PlainServant;
        PortableServer::ServantBase_var owner(servant);
        before = Ior(CORBA::Object_var(get_persistent_ref(child.in(), servant, "plain")).in());
    }
    m_root = PortableServer::POA::_nil();
    m_orb->destroy();
    config().SetOrb(CORBA::ORB::_nil());
    m_orb = CORBA::ORB::_nil();
    Start(m_port);
    PortableServer::POA_var child = get_persistent_poa(m_root.in(), "child");
    PlainServant* servant = new PlainServant;
    PortableServer::ServantBase_var owner(servant);
    CORBA::Object_var after = get_persistent_ref(child.in(), servant, "plain");
    CORBA::Object_var kept = m_orb->string_to_object(before.c_str());
    QvAgentTest::Plain_var plain = QvAgentTest::Plain::_narrow(kept.in());
    ASSERT_FALSE(CORBA::is_nil(plain.in()));
    EXPECT_STREQ("again", CORBA::String_var(plain->Echo("again")).in());
}

}  // namespace
}  // namespace qv_test
