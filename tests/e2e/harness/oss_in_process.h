#pragma once

#include <gtest/gtest.h>

#include <string>

#include "emsMgrC.h"
#include "emsSessionFactoryC.h"
#include "managedElementManagerC.h"
#include "nmsSessionS.h"
#include "tests/e2e/harness/deployment.h"

namespace qv_e2e {

/// The OSS's end of a session; counts what the EMS asks of it.
class CountingClient : public POA_nmsSession::NmsSession_I {
  public:
    session::Session_I_ptr associatedSession() override { return session::Session_I::_nil(); }
    void ping() override {}
    void endSession() override {}
    void eventLossOccurred(const char*, const char*) override {}
    void eventLossCleared(const char*) override {}
};

/// A test that calls a demo agent through the stubs, as an OSS of its own.
class InterfaceTest : public testing::Test {
  protected:
    InterfaceTest();
    ~InterfaceTest() override;

    /// Starts naming service and agent with the settings made so far, and finds the factory.
    void Start();

    emsSession::EmsSession_I_var LogIn(const std::string& user = "oss",
                                       const std::string& password = Deployment::kPassword);
    managedElementManager::ManagedElementMgr_I_var Elements(emsSession::EmsSession_I_ptr session);

    static globaldefs::NamingAttributes_T ElementName(const std::string& ems, const std::string& element);

    Deployment deployment;
    CORBA::ORB_var orb;
    nmsSession::NmsSession_I_var client;
    emsSessionFactory::EmsSessionFactory_I_var factory;
};

/// What `call` raises: the type of the interface's exception; a failure of the test when it raises nothing.
template <class Call>
globaldefs::ExceptionType_T FailureOf(Call call, std::string* reason = nullptr) {
    try {
        call();
    } catch (const globaldefs::ProcessingFailureException& e) {
        if (reason != nullptr) {
            *reason = e.errorReason.in();
        }
        return e.exceptionType;
    }
    ADD_FAILURE() << "nothing was raised";
    return globaldefs::EXCPT_INTERNAL_ERROR;
}

/// Whether the object that `call` goes to is gone. While its adapter ends, the ORB answers by TRANSIENT or
/// OBJ_ADAPTER: not yet.
template <class Call>
bool IsGone(Call call) {
    try {
        call();
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
        return true;
    } catch (const CORBA::TRANSIENT&) {
    } catch (const CORBA::OBJ_ADAPTER&) {
    }
    return false;
}

}  // namespace qv_e2e
