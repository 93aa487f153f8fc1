// The servant with the ORB seam alone: one interceptor that does nothing, servants limited as the library
// limits them.
#include <iostream>

#include "orb/portability.h"
#include "request_pathS.h"
#include "target_servant.h"

#include <tao/ORBInitializer_Registry.h>

namespace {

class EmptyInterceptor : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    char* name() override { return CORBA::string_dup("empty"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_reply(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_exception(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_other(PortableInterceptor::ServerRequestInfo_ptr) override {}
};

class Initializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        PortableInterceptor::ServerRequestInterceptor_var interceptor = new EmptyInterceptor;
        info->add_server_request_interceptor(interceptor);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: bench_seam_server FILE -ORBEndpoint iiop://127.0.0.1:0\n";
        return 2;
    }
    PortableInterceptor::ORBInitializer_var initializer = new Initializer;
    PortableInterceptor::register_orb_initializer(initializer);
    qv_orb::SetServantThreads(4);
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    ServeUntilStopped(orb, argv[1]);
    return 0;
}
