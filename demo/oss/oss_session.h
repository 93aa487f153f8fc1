#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <functional>
#include <string>
#include <vector>

#include "demo/oss/nms_session_servant.h"
#include "demo/oss/oss_orb.h"
#include "demo/oss/remote_call.h"
#include "emsMgrC.h"
#include "emsSessionFactoryC.h"
#include "managedElementManagerC.h"

namespace qv_oss {

/// The full name of an element of an EMS.
globaldefs::NamingAttributes_T ElementName(const std::string& ems, const std::string& element);

/// One session with an EMS: logs in when it is made and out when it goes. Operations raise Problem.
class OssSession {
  public:
    /// Where the EMS is too busy with logins it is tried again, for as long as one call may take. The
    /// password is overwritten.
    OssSession(const OssOrb& orb, const RemoteCaller& caller,
               emsSessionFactory::EmsSessionFactory_I_ptr factory, const std::string& user,
               std::string& password);
    ~OssSession();
    OssSession(const OssSession&) = delete;
    OssSession& operator=(const OssSession&) = delete;

    void Ping() const;
    std::vector<std::string> Managers() const;
    emsMgr::EMS_T_var Ems() const;

    using Page = managedElement::ManagedElementList_T;

    /// Reads all elements in pages of that size and calls `take` with each page and the length of the whole
    /// list.
    void ReadElements(unsigned page_size,
                      const std::function<void(const Page& page, std::size_t all)>& take) const;

    managedElement::ManagedElement_T_var Element(const globaldefs::NamingAttributes_T& name) const;

    /// Merges `info` into what the element has; afterwards it holds all of that.
    void SetAdditionalInfo(const globaldefs::NamingAttributes_T& element, globaldefs::NVSList_T& info) const;

    /// One of the EMS's managers, by its name.
    common::Common_I_var Manager(const char* name) const;

    /// The channel through which the EMS sends its events.
    CosNotifyChannelAdmin::EventChannel_var EventChannel() const;

    /// Who hears what the EMS says of lost events, until the session or null takes its place; not owned.
    void TellLossesTo(LossListener* listener) const { client_->TellLossesTo(listener); }

    void LogOut();

  private:
    void LogIn(emsSessionFactory::EmsSessionFactory_I_ptr factory, const std::string& user,
               const std::string& password);
    void MakeClient(const OssOrb& orb);
    managedElementManager::ManagedElementMgr_I_var ElementManager() const;

    const RemoteCaller& caller_;
    PortableServer::ServantBase_var servant_;  // owns *client_
    NmsSessionServant* client_;
    nmsSession::NmsSession_I_var client_reference_;
    emsSession::EmsSession_I_var session_;
};

}  // namespace qv_oss
