#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <string>
#include <utility>

#include "weatherS.h"

/// The EMS's end of the session of one OSS: hands out the managers that the bundle registered.
class Session : public POA_Weather::Session {
  public:
    /// `client` is the OSS's own POA, which goes with the session.
    Session(PortableServer::POA_ptr client, std::string user, std::string address)
        : client_(PortableServer::POA::_duplicate(client)),
          user_(std::move(user)),
          address_(std::move(address)) {}

    Weather::Manager_ptr getManager(const char* name) override;
    CosNotifyChannelAdmin::EventChannel_ptr getEventChannel() override;
    void endSession() override;

  private:
    const PortableServer::POA_var client_;
    const std::string user_;
    const std::string address_;
};

/// Where an OSS begins: checks user and password and gives it a session.
class SessionFactory : public POA_Weather::SessionFactory {
  public:
    /// The OSSs' POAs are made below `top`.
    explicit SessionFactory(PortableServer::POA_ptr top) : top_(PortableServer::POA::_duplicate(top)) {}

    Weather::Session_ptr getEmsSession(const char* user, const char* password) override;

  private:
    PortableServer::POA_ptr MakeClientPoa(const std::string& user, const std::string& address);

    const PortableServer::POA_var top_;
};
