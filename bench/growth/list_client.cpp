// Asks one server for a long list a number of times and prints one line of JSON: how long each reply took,
// and the CPU time that the server spent on them all. With 0 calls it only has the elements made.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "request_pathC.h"

namespace {

using Clock = std::chrono::steady_clock;

bench::Target_ptr TargetIn(CORBA::ORB_ptr orb, const char* file) {
    std::string reference;
    std::getline(std::ifstream(file) >> std::ws, reference);
    const CORBA::Object_var object = orb->string_to_object(reference.c_str());
    return bench::Target::_narrow(object.in());
}

void Call(bench::Target_ptr target, unsigned long count, int calls) {
    const double cpu_before = target->cpu_seconds();
    std::cout << "{\"ms\": [";
    for (int i = 0; i < calls; ++i) {
        const auto begin = Clock::now();
        const bench::Elements_var elements = target->list();
        const std::chrono::duration<double, std::milli> taken = Clock::now() - begin;
        if (elements->length() != count) {
            throw CORBA::INTERNAL();
        }
        std::cout << (i == 0 ? "" : ", ") << taken.count();
    }
    std::cout << "], \"server_seconds\": " << target->cpu_seconds() - cpu_before << "}\n";
}

}  // namespace

int main(int argc, char** argv) {
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    if (argc != 4) {
        std::cerr << "usage: bench_list_client FILE ELEMENTS CALLS\n";
        return 2;
    }
    try {
        const bench::Target_var target = TargetIn(orb, argv[1]);
        const unsigned long count = std::strtoul(argv[2], nullptr, 10);
        const int calls = std::atoi(argv[3]);
        if (calls == 0) {
            target->prepare(static_cast<CORBA::ULong>(count));
        } else {
            Call(target, count, calls);
        }
        return 0;
    } catch (const CORBA::Exception& ex) {
        std::cerr << "bench_list_client: the call failed: " << ex._rep_id() << '\n';
        return 1;
    }
}
