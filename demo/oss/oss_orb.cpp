#include "demo/oss/oss_orb.h"

#include <string>
#include <vector>

namespace qv_oss {

OssOrb::OssOrb(const char* program, const std::string& ssl_profile) {
    std::vector<std::string> words{program};
    if (!ssl_profile.empty()) {
        words.insert(words.end(), {"-ORBSvcConf", ssl_profile});
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    orb_ = CORBA::ORB_init(count, arguments.data(), "qv_demo_oss");
    const CORBA::Object_var object = orb_->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    poa_ = root->create_POA("oss", manager.in(), CORBA::PolicyList());
    manager->activate();
    server_ = std::thread([orb = CORBA::ORB::_duplicate(orb_.in())] {
        const CORBA::ORB_var own = orb;
        try {
            own->run();
        } catch (const CORBA::Exception&) {
            // The ORB is on its way out; the calls of the program itself tell what is wrong.
        }
    });
}

OssOrb::~OssOrb() {
    try {
        orb_->shutdown(true);
        server_.join();
        orb_->destroy();
    } catch (const CORBA::Exception&) {
        if (server_.joinable()) {
            server_.detach();
        }
    }
}

}  // namespace qv_oss
