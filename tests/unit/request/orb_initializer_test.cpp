// What the initializer does with the ORB's initialisation. This program replaces the allocation function that
// does not throw, so that one allocation can be made to fail.

#include <cerrno>
#include <new>

#include "orb/portability.h"
#include "tests/unit/request/failing_new.h"
#include "tests/unit/request/interceptor_fixture.h"

QV_TEST_DEFINE_FAILING_NEW

namespace {

/// Takes the interceptor as an ORB does. Nothing else is asked of it.
class FakeOrbInitInfo : public virtual PortableInterceptor::ORBInitInfo {
  public:
    PortableInterceptor::ServerRequestInterceptor_var registered;
    int registrations = 0;

    void add_server_request_interceptor(
        PortableInterceptor::ServerRequestInterceptor_ptr interceptor) override {
        ++registrations;
        registered = PortableInterceptor::ServerRequestInterceptor::_duplicate(interceptor);
    }

    CORBA::StringSeq* arguments() override { throw CORBA::NO_IMPLEMENT(); }
    char* orb_id() override { throw CORBA::NO_IMPLEMENT(); }
    void register_initial_reference(const char*, CORBA::Object_ptr) override { throw CORBA::NO_IMPLEMENT(); }
    CORBA::Object_ptr resolve_initial_references(const char*) override { throw CORBA::NO_IMPLEMENT(); }
    void add_client_request_interceptor(PortableInterceptor::Interceptor_ptr) override {
        throw CORBA::NO_IMPLEMENT();
    }
    void add_ior_interceptor(PortableInterceptor::Interceptor_ptr) override { throw CORBA::NO_IMPLEMENT(); }
    PortableInterceptor::SlotId allocate_slot_id() override { throw CORBA::NO_IMPLEMENT(); }
};

class OrbInitializerTest : public qv_test::InterceptorFixture {
  protected:
    OrbInitializerTest() : m_orbOwner(orb), m_initializerOwner(initializer) {}

    FakeOrbInitInfo* const orb = new FakeOrbInitInfo;
    Server_ORBInitializer* const initializer = new Server_ORBInitializer;

  private:
    TAO_Pseudo_Var_T<PortableInterceptor::ORBInitInfo> m_orbOwner;
    PortableInterceptor::ORBInitializer_var m_initializerOwner;
};

TEST_F(OrbInitializerTest, BeforeTheOrbIsThereNothingIsRegistered) {
    initializer->SetInterceptorName("ZorVexCorbaAgent");
    initializer->pre_init(orb);
    EXPECT_EQ(orb->registrations, 0);
}

TEST_F(OrbInitializerTest, OneInterceptorOfTheGivenNameIsRegistered) {
    initializer->SetInterceptorName("ZorVexCorbaAgent");
    initializer->post_init(orb);
    ASSERT_EQ(orb->registrations, 1);
    const CORBA::String_var name = orb->registered->name();
    EXPECT_STREQ(name.in(), "ZorVexCorbaAgent");
    EXPECT_THROW(orb->registered->receive_request(&info), CORBA::NO_PERMISSION);
}

TEST_F(OrbInitializerTest, TheInterceptorLoadsTheStatistics) {
    EnableStatistics(true);
    WriteStatistics("ping = 7\n");
    qv_test::NotingHooks hooks;
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(&hooks);
    initializer->post_init(orb);
    orb->registered->receive_request(&info);
    EXPECT_EQ(Statistics(), "ping = 8\n");
}

TEST_F(OrbInitializerTest, WithoutMemoryTheOrbIsTold) {
    const qv_test::FailingNew noMemory(sizeof(Server_Request_Interceptor));
    try {
        initializer->post_init(orb);
        FAIL() << "no exception";
    } catch (const CORBA::NO_MEMORY& ex) {
        EXPECT_EQ(ex.minor(), qv_orb::TaoMinorCode(0x54410000, ENOMEM));
        EXPECT_EQ(ex.completed(), CORBA::COMPLETED_NO);
    }
    EXPECT_EQ(orb->registrations, 0);
}

}  // namespace
