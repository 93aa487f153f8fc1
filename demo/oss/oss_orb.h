#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <string>
#include <thread>

namespace qv_oss {

/// The OSS's ORB, which also serves the calls that the EMS makes to it. Lives as long as the program needs
/// it.
class OssOrb {
  public:
    /// By SSL with the service configuration file `ssl_profile`, without SSL when it is empty. Raises
    /// CORBA::Exception.
    OssOrb(const char* program, const std::string& ssl_profile);
    ~OssOrb();
    OssOrb(const OssOrb&) = delete;
    OssOrb& operator=(const OssOrb&) = delete;

    CORBA::ORB_ptr orb() const { return orb_.in(); }
    /// The adapter for the OSS's own objects.
    PortableServer::POA_ptr poa() const { return poa_.in(); }

  private:
    CORBA::ORB_var orb_;
    PortableServer::POA_var poa_;
    std::thread server_;
};

}  // namespace qv_oss
