#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/free_port.h"
#include "tests/unit/agent/agent_fixture.h"

namespace qv_test {

using Components = std::vector<std::pair<std::string, std::string>>;

inline CosNaming::Name MakeName(const Components& components) {
    CosNaming::Name name;
    name.length(static_cast<CORBA::ULong>(components.size()));
    for (CORBA::ULong i = 0; i < name.length(); ++i) {
        name[i].id = CORBA::string_dup(components[i].first.c_str());
        name[i].kind = CORBA::string_dup(components[i].second.c_str());
    }
    return name;
}

inline Components FactoryPath() {
    return {{"TMF_MTNM", "Class"},
            {"ZORVEX", "Vendor"},
            {"Zorvex/KLV", "EmsInstance"},
            {"2.0", "Version"},
            {"Zorvex/KLV", "EmsSessionFactory_I"}};
}

/// An ORB that knows where a naming service would be; none is there.
class Naming : public AgentTest {
  protected:
    Naming() {
        Probe::NamingServiceHost() = "127.0.0.1";
        Probe::NamingServicePort() = static_cast<unsigned short>(FreePort());
        m_orb = MakeOrb();
    }

    /// Hands one option to the singleton, as the settings would.
    void UseOption(std::string option) {
        char* argv[] = {option.data(), nullptr};
        int argc = 1;
        config().parse_args(argc, argv);
    }

    CORBA::Object_var Reference(const std::string& key) {
        return m_orb->string_to_object(("corbaloc:iiop:127.0.0.1:1/" + key).c_str());
    }

    CORBA::ORB_var m_orb;
};

}  // namespace qv_test
