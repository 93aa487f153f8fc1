// PortableInterceptor::ORBInitInfo over the state of the ORB that is being made.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qv_orb/orb_initializer.h"

namespace qv_orb {

class InitInfo final : public virtual PortableInterceptor::ORBInitInfo {
  public:
    /// From here on initial references can be resolved.
    void OrbMade(CORBA::ORB_ptr orb);
    /// From here on every operation raises OBJECT_NOT_EXIST.
    void Close() { open_ = false; }

    CORBA::StringSeq* arguments() override;
    char* orb_id() override;
    void register_initial_reference(const char* id, CORBA::Object_ptr object) override;
    CORBA::Object_ptr resolve_initial_references(const char* id) override;
    void add_server_request_interceptor(
        PortableInterceptor::ServerRequestInterceptor_ptr interceptor) override;
    void add_client_request_interceptor(PortableInterceptor::Interceptor_ptr interceptor) override;
    void add_ior_interceptor(PortableInterceptor::Interceptor_ptr interceptor) override;
    PortableInterceptor::SlotId allocate_slot_id() override;

  private:
    void CheckOpen() const;

    CORBA::ORB_var orb_;
    std::vector<std::pair<std::string, CORBA::Object_var>> early_references_;  // registered ahead of the ORB
    bool open_ = true;
};

}  // namespace qv_orb
