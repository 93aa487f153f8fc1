#include "tests/e2e/harness/oss_in_process.h"

namespace qv_e2e {

InterfaceTest::InterfaceTest() {
    int argc = 0;
    char* none[] = {nullptr};
    orb = CORBA::ORB_init(argc, none, "interface-test");
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    PortableServer::ServantBase_var servant = new CountingClient;
    const PortableServer::ObjectId_var id = root->activate_object(servant.in());
    const CORBA::Object_var reference = root->id_to_reference(id.in());
    client = nmsSession::NmsSession_I::_narrow(reference.in());
}

InterfaceTest::~InterfaceTest() {
    orb->destroy();
}

void InterfaceTest::Start() {
    deployment.StartNaming();
    deployment.Set("CORBAAgent_Option", "\"-out " + deployment.dir().Write("factory.ior", "") + "\"");
    deployment.StartAgent();
    const std::string ior = qv_test::ReadFile(deployment.dir().File("factory.ior"));
    const CORBA::Object_var object = orb->string_to_object(ior.c_str());
    factory = emsSessionFactory::EmsSessionFactory_I::_narrow(object.in());
    ASSERT_FALSE(CORBA::is_nil(factory.in()));
}

emsSession::EmsSession_I_var InterfaceTest::LogIn(const std::string& user, const std::string& password) {
    emsSession::EmsSession_I_var session;
    factory->getEmsSession(user.c_str(), password.c_str(), client.in(), session.out());
    return session;
}

managedElementManager::ManagedElementMgr_I_var InterfaceTest::Elements(emsSession::EmsSession_I_ptr session) {
    common::Common_I_var manager;
    session->getManager("ManagedElement", manager.out());
    return managedElementManager::ManagedElementMgr_I::_narrow(manager.in());
}

globaldefs::NamingAttributes_T InterfaceTest::ElementName(const std::string& ems,
                                                          const std::string& element) {
    globaldefs::NamingAttributes_T name;
    name.length(2);
    name[0].name = "EMS";
    name[0].value = ems.c_str();
    name[1].name = "ManagedElement";
    name[1].value = element.c_str();
    return name;
}

}  // namespace qv_e2e
