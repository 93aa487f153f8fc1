// consumer serve FILE: serves a Greeting::Host and writes its reference. consumer call IOR: calls it.
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

#include "greetingC.h"
#include "greetingS.h"
#include "orb/portability.h"
#include "request/process_exception.h"

namespace {

class Host : public POA_Greeting::Host {
  public:
    explicit Host(CORBA::ORB_ptr orb) : m_orb(CORBA::ORB::_duplicate(orb)) {}

    char* greet(const char* name) override {
        if (*name == '\0') {
            throw Greeting::NobodyThere("the empty name");
        }
        return CORBA::string_dup(("hello " + std::string(name)).c_str());
    }
    void shutdown() override { m_orb->shutdown(false); }

  private:
    CORBA::ORB_var m_orb;
};

int Serve(CORBA::ORB_ptr orb, const std::string& file) {
    CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    PortableServer::POA_var poa = PortableServer::POA::_narrow(object);
    PortableServer::POAManager_var manager = poa->the_POAManager();
    manager->activate();
    Host host(orb);
    PortableServer::ObjectId_var id = poa->activate_object(&host);
    CORBA::Object_var reference = poa->id_to_reference(id);
    CORBA::String_var text = orb->object_to_string(reference);
    std::ofstream(file + ".part") << text.in();
    std::rename((file + ".part").c_str(), file.c_str());
    orb->run();
    return 0;
}

int Call(CORBA::ORB_ptr orb, const std::string& ior) {
    CORBA::Object_var object = orb->string_to_object(ior.c_str());
    Greeting::Host_var host = Greeting::Host::_narrow(object);
    CORBA::String_var answer = host->greet("world");
    std::cout << answer.in() << "\n";
    try {
        answer = host->greet("");
        return 1;
    } catch (const Greeting::NobodyThere& e) {
        std::cout << "nobody: " << e.who.in() << "\n";
    }
    host->shutdown();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        CORBA::ORB_var orb = CORBA::ORB_init(argc, argv, "");
        if (argc != 3) {
            return 2;
        }
        // Something of the library proper, so that the program depends on it.
        std::cout << NS_CORBA::ProcessException().what() << "\n" << std::flush;
        const int result = std::string(argv[1]) == "serve" ? Serve(orb, argv[2]) : Call(orb, argv[2]);
        orb->destroy();
        return result;
    } catch (const CORBA::Exception& e) {
        std::cerr << qv_orb::ExceptionText(e) << "\n";
        return 1;
    }
}
