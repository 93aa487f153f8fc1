#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <atomic>

namespace qv_test {

/// A POA that offers nothing; tests override what they need. Made with new and one reference, deleted with
/// the last.
class FakePoa : public PortableServer::POA {
    using Poa = PortableServer::POA;
    using Id = PortableServer::ObjectId;
    using Servant = PortableServer::Servant;

  public:
    FakePoa() : Poa(0) {}

    Poa* create_POA(const char*, PortableServer::POAManager*, const CORBA::PolicyList&) override { None(); }
    Poa* find_POA(const char*, CORBA::Boolean) override { None(); }
    void destroy(CORBA::Boolean, CORBA::Boolean) override { None(); }
    char* the_name() override { None(); }
    Poa* the_parent() override { None(); }
    PortableServer::POAList* the_children() override { None(); }
    PortableServer::POAManager* the_POAManager() override { None(); }
    PortableServer::AdapterActivator* the_activator() override { None(); }
    void the_activator(PortableServer::AdapterActivator*) override { None(); }
    PortableServer::ServantManager* get_servant_manager() override { None(); }
    void set_servant_manager(PortableServer::ServantManager*) override { None(); }
    Servant get_servant() override { None(); }
    void set_servant(Servant) override { None(); }
    Id* activate_object(Servant) override { None(); }
    void activate_object_with_id(const Id&, Servant) override { None(); }
    void deactivate_object(const Id&) override { None(); }
    CORBA::Object_ptr create_reference(const char*) override { None(); }
    CORBA::Object_ptr create_reference_with_id(const Id&, const char*) override { None(); }
    Id* servant_to_id(Servant) override { None(); }
    CORBA::Object_ptr servant_to_reference(Servant) override { None(); }
    Servant reference_to_servant(CORBA::Object_ptr) override { None(); }
    Id* reference_to_id(CORBA::Object_ptr) override { None(); }
    Servant id_to_servant(const Id&) override { None(); }
    CORBA::Object_ptr id_to_reference(const Id&) override { None(); }
    CORBA::OctetSeq* id() override { None(); }

    void _NP_incrRefCount() override { ++m_references; }
    void _NP_decrRefCount() override {
        if (--m_references == 0) {
            delete this;
        }
    }

  protected:
    ~FakePoa() override = default;

  private:
    [[noreturn]] static void None() { throw CORBA::NO_IMPLEMENT(); }

    std::atomic<int> m_references{1};
};

}  // namespace qv_test
