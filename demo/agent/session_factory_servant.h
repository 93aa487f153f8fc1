#pragma once

#include <memory>

#include "demo/agent/ems.h"
#include "emsSessionFactoryS.h"

namespace qv_demo {

/// The object that an OSS finds in the naming service: lets it log in. Thread-safe.
class SessionFactoryServant : public POA_emsSessionFactory::EmsSessionFactory_I {
  public:
    explicit SessionFactoryServant(const Ems& ems) : ems_(ems) {}

    char* getVersion() override;
    void getEmsSession(const char* user, const char* password, nmsSession::NmsSession_I_ptr client,
                       emsSession::EmsSession_I_out session) override;

  private:
    std::shared_ptr<const Session> Open(const char* user, const char* password,
                                        nmsSession::NmsSession_I_ptr client);

    const Ems& ems_;
};

}  // namespace qv_demo
