// caller_peer IOR   asks the object of another process who calls it, and prints the answer

#include <tao/ORB.h>

#include <iostream>

#include "callerC.h"
#include "orb/portability.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: caller_peer IOR\n";
        return 2;
    }
    try {
        int none = 0;
        const CORBA::ORB_var orb = CORBA::ORB_init(none, nullptr);
        const CORBA::Object_var object = orb->string_to_object(argv[1]);
        const QvCaller_var caller = QvCaller::_narrow(object.in());
        const CORBA::String_var answer = caller->who();
        std::cout << answer.in() << std::endl;
        orb->destroy();
        return 0;
    } catch (const CORBA::Exception& ex) {
        std::cerr << qv_orb::ExceptionText(ex) << std::endl;
        return 1;
    }
}
