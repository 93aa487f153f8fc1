// The other process of the gate's tests.
//   gate_peer call <IOR> <operation>   calls the object as a client that knows nothing of the agent; prints
//   the outcome gate_peer agent                    comes up as an agent, serves one "ping" of its own and
//   goes down again

#include <iostream>
#include <string>

#include "gateC.h"
#include "orb/portability.h"
#include "tests/support/open_hooks.h"
#include "tests/unit/request/gate_agent.h"

namespace {

const char* CompletionWord(CORBA::CompletionStatus status) {
    switch (status) {
        case CORBA::COMPLETED_YES:
            return "COMPLETED_YES";
        case CORBA::COMPLETED_NO:
            return "COMPLETED_NO";
        default:
            return "COMPLETED_MAYBE";
    }
}

std::string CallOperation(CORBA::Object_ptr object, const std::string& operation) {
    const GateTest::Gate_var gate = GateTest::Gate::_unchecked_narrow(object);
    if (operation == "_non_existent") {
        return object->_non_existent() ? "gone" : "there";
    }
    if (operation == "served") {
        gate->served();
    } else if (operation == "ping") {
        gate->ping();
    } else if (operation == "echo") {
        const CORBA::String_var answer = gate->echo("hello");
        return answer.in();
    } else if (operation == "fail") {
        gate->fail();
    } else if (operation == "tell") {
        gate->tell("hello");
        gate->ping();  // whose answer tells that the oneway before it has gone
    } else {
        return "no such operation";
    }
    return "done";
}

std::string Outcome(CORBA::Object_ptr object, const std::string& operation) {
    try {
        return CallOperation(object, operation);
    } catch (const GateTest::Refused& refused) {
        return std::string("Refused ") + refused.why.in();
    } catch (const CORBA::SystemException& ex) {
        return std::string(ex._name()) + " " + std::to_string(ex.minor()) + " " +
               CompletionWord(ex.completed());
    }
}

int Call(const char* ior, const char* operation) {
    int argc = 0;
    const CORBA::ORB_var orb = CORBA::ORB_init(argc, nullptr);
    const CORBA::Object_var object = orb->string_to_object(ior);
    std::cout << Outcome(object.in(), operation) << std::endl;
    orb->destroy();
    return 0;
}

int ServeOnePing() {
    qv_test::ScopedConfigItems config;
    qv_test::SetAgentItems(config, true);
    qv_test::OpenHooks hooks;
    qv_test::GateAgent agent;
    qv_test::GateAgent::Config().SetReqInterceptorImpl(&hooks);
    agent.gate->ping();
    return 0;
}

int Main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "call" && argc == 4) {
        return Call(argv[2], argv[3]);
    }
    if (mode == "agent" && argc == 2) {
        return ServeOnePing();
    }
    std::cerr << "usage: gate_peer call IOR OPERATION | gate_peer agent\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Main(argc, argv);
    } catch (const CORBA::Exception& ex) {
        std::cerr << qv_orb::ExceptionText(ex) << std::endl;
    } catch (const std::exception& ex) {
        std::cerr << ex.what() << std::endl;
    }
    return 1;
}
