#pragma once

#include "demo/agent/core/password.h"
#include "demo/agent/ems.h"
#include "emsSessionFactoryS.h"

namespace qv_demo {

/// The object that an OSS finds in the naming service: lets it log in. Thread-safe.
class SessionFactoryServant : public POA_emsSessionFactory::EmsSessionFactory_I {
  public:
    SessionFactoryServant(const Ems& ems, PasswordChecker& passwords) : ems_(ems), passwords_(passwords) {}

    char* getVersion() override;
    void getEmsSession(const char* user, const char* password, nmsSession::NmsSession_I_ptr client,
                       emsSession::EmsSession_I_out session) override;

  private:
    void Authenticate(const char* user, const char* password);

    const Ems& ems_;
    PasswordChecker& passwords_;
};

}  // namespace qv_demo
