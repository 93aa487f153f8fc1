// The other process of the tests: a client without interceptors, or a server that calls back.
//   orb_seam_peer call IOR OPERATION [ARGUMENT]          calls once, prints the outcome
//   orb_seam_peer crowd IOR OPERATION ARGUMENT THREADS CALLS  calls at the same time, prints each outcome
//   that occurred
//                                                        with its number
//   orb_seam_peer serve                                  prints the reference of a target of its own, serves
//   it orb_seam_peer nest IOR DEPTH                         calls "nest" with a target of its own as the peer

#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "calls.h"
#include "orb/portability.h"
#include "target_servant.h"

namespace {

using qv_test::CallByName;

Seam::Target_ptr Resolve(CORBA::ORB_ptr orb, const char* ior) {
    const CORBA::Object_var object = orb->string_to_object(ior);
    return Seam::Target::_unchecked_narrow(object.in());
}

int Crowd(CORBA::ORB_ptr orb, const std::vector<std::string>& args) {
    const Seam::Target_var target = Resolve(orb, args.at(1).c_str());
    std::mutex lock;
    std::map<std::string, int> outcomes;
    std::vector<std::thread> threads;
    for (int i = 0; i < std::stoi(args.at(4)); ++i) {
        threads.emplace_back([&] {
            for (int call = 0; call < std::stoi(args.at(5)); ++call) {
                const std::string outcome = CallByName(target.in(), args.at(2), args.at(3));
                std::lock_guard<std::mutex> guard(lock);
                ++outcomes[outcome];
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& [outcome, number] : outcomes) {
        std::cout << outcome << " x" << number << std::endl;
    }
    return 0;
}

Seam::Target_ptr Activate(CORBA::ORB_ptr orb) {
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    static qv_test::TargetServant servant("peer");
    return servant._this();
}

int Serve(CORBA::ORB_ptr orb) {
    const Seam::Target_var target = Activate(orb);
    const CORBA::String_var ior = orb->object_to_string(target.in());
    std::cout << ior.in() << std::endl;
    orb->run();
    return 0;
}

int Nest(CORBA::ORB_ptr orb, const std::vector<std::string>& args) {
    const Seam::Target_var own = Activate(orb);
    const Seam::Target_var target = Resolve(orb, args.at(1).c_str());
    std::cout << target->nest(own.in(), std::stoi(args.at(2))) << std::endl;
    return 0;
}

// By SSL where ORB_SEAM_PEER_PROFILE names a service configuration file.
std::vector<std::string> OrbOptions() {
    const char* const profile = std::getenv("ORB_SEAM_PEER_PROFILE");
    if (profile == nullptr) {
        return {"-ORBEndpoint", "iiop://127.0.0.1:0"};
    }
    return {"-ORBSvcConf", profile, "-ORBEndpoint", "iiop://127.0.0.1:0/ssl_port=0"};
}

int Main(CORBA::ORB_ptr orb, const std::vector<std::string>& args) {
    const std::string mode = args.empty() ? "" : args[0];
    if (mode == "call") {
        const Seam::Target_var target = Resolve(orb, args.at(1).c_str());
        std::cout << CallByName(target.in(), args.at(2), args.size() > 3 ? args[3] : "") << std::endl;
        return 0;
    }
    if (mode == "crowd") {
        return Crowd(orb, args);
    }
    if (mode == "serve") {
        return Serve(orb);
    }
    if (mode == "nest") {
        return Nest(orb, args);
    }
    std::cerr << "orb_seam_peer: the first argument is call, crowd, serve or nest\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    try {
        std::vector<std::string> options = OrbOptions();
        std::vector<char*> pointers = {argv[0]};
        for (std::string& option : options) {
            pointers.push_back(option.data());
        }
        pointers.push_back(nullptr);
        int count = static_cast<int>(options.size()) + 1;
        const CORBA::ORB_var orb = CORBA::ORB_init(count, pointers.data());
        const int code = Main(orb.in(), args);
        orb->destroy();
        return code;
    } catch (const CORBA::Exception& ex) {
        std::cerr << qv_orb::ExceptionText(ex) << std::endl;
    } catch (const std::exception& ex) {
        std::cerr << ex.what() << std::endl;
    }
    return 1;
}
