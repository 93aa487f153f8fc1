// Calls one server from a number of threads for a number of seconds and prints the calls per second and the
// CPU time that the server spent per call.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <thread>
#include <vector>

#include "bench/request_path/query_values.h"

namespace {

using Clock = std::chrono::steady_clock;

unsigned long CallUntil(bench::Target_ptr target, const std::atomic<bool>& go_on) {
    const bench::Filters filters = SomeFilters();
    const CORBA::Any detail = SomeDetail();
    unsigned long calls = 0;
    while (go_on.load(std::memory_order_relaxed)) {
        CORBA::String_var answer;
        target->query("KLV/Network-17/Element-4711", static_cast<CORBA::Long>(calls), filters, detail,
                      answer.out());
        ++calls;
    }
    return calls;
}

struct Result {
    double calls_per_second;
    double server_microseconds_per_call;
};

Result Measure(bench::Target_ptr target, unsigned threads, double seconds) {
    std::atomic<bool> go_on{true};
    std::vector<unsigned long> calls(threads);
    std::vector<std::thread> callers;
    const double cpu_before = target->cpu_seconds();
    const auto begin = Clock::now();
    for (unsigned i = 0; i < threads; ++i) {
        callers.emplace_back([&, i] { calls[i] = CallUntil(target, go_on); });
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    go_on = false;
    for (std::thread& caller : callers) {
        caller.join();
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    const double cpu = target->cpu_seconds() - cpu_before;
    unsigned long total = 0;
    for (unsigned long count : calls) {
        total += count;
    }
    return {static_cast<double>(total) / elapsed, cpu * 1e6 / static_cast<double>(total)};
}

}  // namespace

int main(int argc, char** argv) {
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    if (argc != 4) {
        std::cerr << "usage: bench_client FILE THREADS SECONDS   (0 seconds: tell the server to stop)\n";
        return 2;
    }
    try {
        std::string reference;
        std::getline(std::ifstream(argv[1]) >> std::ws, reference);
        CORBA::Object_var object = orb->string_to_object(reference.c_str());
        bench::Target_var target = bench::Target::_narrow(object);
        const double seconds = std::atof(argv[3]);
        if (seconds == 0) {
            target->stop();
            target->_non_existent();
            return 0;
        }
        const Result result = Measure(target, static_cast<unsigned>(std::atoi(argv[2])), seconds);
        std::cout << result.calls_per_second << ' ' << result.server_microseconds_per_call << '\n';
        return 0;
    } catch (const CORBA::Exception& ex) {
        std::cerr << "bench_client: the call failed: " << ex._rep_id() << '\n';
        return 1;
    }
}
