// client IOR TEXT: says TEXT to the bundle, and takes leave.
#include <orb/portability.h>
#include <orbsvcs/CosEventCommC.h>
#include <tao/ORB.h>

#include <iostream>

int main(int argc, char** argv) {
    try {
        const CORBA::ORB_var orb = CORBA::ORB_init(argc, argv, "");
        if (argc != 3) {
            return 2;
        }
        const CORBA::Object_var object = orb->string_to_object(argv[1]);
        const CosEventComm::PushConsumer_var listener = CosEventComm::PushConsumer::_narrow(object.in());
        CORBA::Any text;
        text <<= argv[2];
        listener->push(text);
        listener->disconnect_push_consumer();
        orb->destroy();
        return 0;
    } catch (const CORBA::Exception& e) {
        std::cerr << qv_orb::ExceptionText(e) << "\n";
        return 1;
    }
}
