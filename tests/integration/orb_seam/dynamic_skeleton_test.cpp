// A dynamic skeleton servant would take its requests past the interceptors, so it is refused in every
// position.

#include <gtest/gtest.h>
#include <omniORB4/CORBA.h>

#include "calls.h"
#include "seam_server.h"

namespace {

using namespace qv_test;

constexpr char kRefused[] = "NO_IMPLEMENT 0x00000000 NO";

class Dynamic : public PortableServer::DynamicImplementation {
  public:
    void invoke(CORBA::ServerRequest_ptr request) override {
        reached = true;
        CORBA::NVList_ptr none = nullptr;
        m_orb->create_list(0, none);
        request->arguments(none);
        CORBA::Any title;
        title <<= "ungated";
        request->set_result(title);
    }
    char* _primary_interface(const PortableServer::ObjectId&, PortableServer::POA_ptr) override {
        return CORBA::string_dup("IDL:Seam/Target:1.0");
    }

    bool reached = false;
    CORBA::ORB_ptr m_orb = nullptr;
};

class DynamicSkeletonTest : public ::testing::Test {
  protected:
    DynamicSkeletonTest() { dynamic.m_orb = server.orb(); }

    PortableServer::POA_ptr ChildPoa(PortableServer::RequestProcessingPolicyValue processing,
                                     PortableServer::ServantRetentionPolicyValue retention) {
        CORBA::PolicyList policies(3);
        policies.length(3);
        policies[0] = server.root()->create_request_processing_policy(processing);
        policies[1] = server.root()->create_servant_retention_policy(retention);
        policies[2] = server.root()->create_id_uniqueness_policy(PortableServer::MULTIPLE_ID);
        const PortableServer::POAManager_var manager = server.root()->the_POAManager();
        return server.root()->create_POA("dynamic", manager.in(), policies);
    }

    void ExpectRefused(CORBA::Object_ptr object) {
        const Seam::Target_var target = Seam::Target::_unchecked_narrow(object);
        for (const char* operation : {"title", "_is_a", "_non_existent"}) {
            EXPECT_EQ(RemoteCall(server.Ior(object), operation, "IDL:Seam/Stranger:1.0"), kRefused)
                << operation;
            EXPECT_EQ(CallByName(target.in(), operation, "IDL:Seam/Stranger:1.0"), kRefused) << operation;
        }
        EXPECT_FALSE(dynamic.reached);
        EXPECT_EQ(server.Remote("title"), "target");
    }

    Dynamic dynamic;
    SeamServer server;
};

TEST_F(DynamicSkeletonTest, ActivatedObjectIsRefused) {
    const PortableServer::ObjectId_var id = server.root()->activate_object(&dynamic);
    const CORBA::Object_var object = server.root()->id_to_reference(id.in());
    ExpectRefused(object.in());
}

TEST_F(DynamicSkeletonTest, DefaultServantIsRefused) {
    const PortableServer::POA_var poa =
        ChildPoa(PortableServer::USE_DEFAULT_SERVANT, PortableServer::NON_RETAIN);
    poa->set_servant(&dynamic);
    const CORBA::Object_var object = poa->create_reference("IDL:Seam/Target:1.0");
    ExpectRefused(object.in());
}

class Locator : public virtual PortableServer::ServantLocator, public virtual qv_orb::CountedLocalObject {
  public:
    explicit Locator(PortableServer::Servant servant) : m_servant(servant) {}
    PortableServer::Servant preinvoke(const PortableServer::ObjectId&, PortableServer::POA_ptr, const char*,
                                      void*& cookie) override {
        cookie = nullptr;
        return m_servant;
    }
    void postinvoke(const PortableServer::ObjectId&, PortableServer::POA_ptr, const char*, void*,
                    PortableServer::Servant) override {}

  private:
    PortableServer::Servant m_servant;
};

TEST_F(DynamicSkeletonTest, ServantOfALocatorIsRefused) {
    const PortableServer::POA_var poa =
        ChildPoa(PortableServer::USE_SERVANT_MANAGER, PortableServer::NON_RETAIN);
    auto* const locator = new Locator(&dynamic);
    poa->set_servant_manager(locator);
    CORBA::release(locator);
    const CORBA::Object_var object = poa->create_reference("IDL:Seam/Target:1.0");
    ExpectRefused(object.in());
}

}  // namespace
