// A program without CMake: the exception text of the ORB below, on headers and libraries from pkg-config.
#include <agent/corbabaseagentconfig.h>
#include <orb/portability.h>
#include <tao/ORB.h>

#include <iostream>

int main() {
    std::cout << "threads " << NS_CORBA::CorbaBaseAgentConfig::Instance()->GetORBThrdNum() << "\n";
    std::cout << qv_orb::ExceptionText(CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO)) << "\n";
    return 0;
}
