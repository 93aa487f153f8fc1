#pragma once

#include <tao/PortableServer/PortableServer.h>

#include "weatherS.h"

/// The EMS's end of a session: hands out the managers that the bundle registered.
class Session : public POA_Weather::Session {
  public:
    Weather::Manager_ptr getManager(const char* name) override;
    CosNotifyChannelAdmin::EventChannel_ptr getEventChannel() override;
    void endSession() override;
};

/// Where an OSS begins: gives it a session.
class SessionFactory : public POA_Weather::SessionFactory {
  public:
    /// Sessions are made in `poa`.
    explicit SessionFactory(PortableServer::POA_ptr poa) : poa_(PortableServer::POA::_duplicate(poa)) {}

    Weather::Session_ptr getEmsSession(const char* user, const char* password) override;

  private:
    const PortableServer::POA_var poa_;
};
