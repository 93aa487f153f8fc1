// A process that uses the call chain library as the agent does, and ends in the way that its argument names.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "platform/call_chain.h"
#include "tests/support/sample_span.h"

namespace {

using xDENcommon::xDENCallChainHelper;
using xDENcommon::xDENCallChainInst;
using xDENcommon::xDENCallChainInstMgr;

void PrintIds(xDENCallChainInst& chain) {
    std::cout << "[" << chain.GetTraceId() << "," << chain.GetParentId() << "," << chain.GetSpanId() << "]\n";
}

void ShowIds(xDENCallChainInst& chain) {
    PrintIds(chain);
    std::cout << chain.SetCallChainInfo("t1", "0", "s1") << "\n";
    std::thread([&chain] {
        PrintIds(chain);
        chain.SetCallChainInfo("t2", "p2", "s2");
        PrintIds(chain);
    }).join();
    PrintIds(chain);
    std::cout << chain.SetCallChainInfo("", "0", "s3") << chain.SetCallChainInfo("t3", "0", "") << "\n";
    PrintIds(chain);
    PrintIds(*xDENCallChainInstMgr::Instance("other"));
    std::cout << (xDENCallChainInstMgr::Instance("MRB") == &chain) << "\n";
}

int ForkAndReport(xDENCallChainInst& chain) {
    const pid_t child = fork();
    if (child == 0) {
        std::exit(chain.ReportSpan(qv_test::SampleSpan(), Json::Value()) == -1 ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string how = argc > 1 ? argv[1] : "";
    const int count = argc > 2 ? std::atoi(argv[2]) : 1;
    xDENCallChainInst* const chain = xDENCallChainInstMgr::Instance("MRB");
    if (chain == nullptr) {
        std::cout << "off " << xDENCallChainHelper::GenerateCCUUID().size() << "\n";
        return 0;
    }
    if (how == "ids") {
        ShowIds(*chain);
        return 0;
    }
    for (int i = 0; i < count; ++i) {
        chain->ReportSpan(qv_test::SampleSpan(xDENCallChainHelper::GenerateCCUUID()), Json::Value());
    }
    std::cout << "reported" << std::endl;
    if (how == "fork") {
        return ForkAndReport(*chain);
    }
    if (how == "_Exit") {
        std::_Exit(7);
    }
    if (how == "abort") {
        std::abort();
    }
    if (how == "busy") {  // threads that report to the very end
        for (int i = 0; i < 3; ++i) {
            std::thread([chain] {
                while (true) {
                    chain->ReportSpan(qv_test::SampleSpan(), Json::Value());
                }
            }).detach();
        }
        std::exit(3);
    }
    if (how == "wait") {
        std::cin.get();
    }
    return 0;
}
