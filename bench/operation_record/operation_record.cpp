// The text of a record's parameters: five of them, among them a sequence of structures and an any.
#include <benchmark/benchmark.h>

#include <iostream>

#include "bench/operation_record/silent_log.h"
#include "bench/request_path/query_values.h"
#include "logging/logmgr.h"

namespace {

Dynamic::ParameterList FiveParameters() {
    Dynamic::ParameterList list;
    list.length(5);
    list[0].argument <<= "KLV/Network-17/Element-4711";
    list[1].argument <<= static_cast<CORBA::Long>(4711);
    list[2].argument <<= SomeFilters();
    list[3].argument <<= SomeDetail();
    list[4].argument <<= "KLV/Network-17/Element-4711";
    for (CORBA::ULong i = 0; i < list.length(); ++i) {
        list[i].mode = i == 4 ? CORBA::PARAM_OUT : CORBA::PARAM_IN;
    }
    return list;
}

void PrintParameters(benchmark::State& state) {
    const Dynamic::ParameterList list = FiveParameters();
    NS_CORBA::CorbaLogMgr& manager = *NS_CORBA::CorbaLogMgr::Instance();
    std::string text;
    for (auto _ : state) {
        manager.ParseParaInfo(&list, text, 1);
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["printed bytes"] = static_cast<double>(text.size());
}
BENCHMARK(PrintParameters)->Threads(1)->Threads(2);

}  // namespace

int main(int argc, char** argv) {
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);  // without an ORB no string goes into an Any
    SilentLog log;
    UseSilentLog(log);
    if (!NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "bench_operation_record: the log manager could not be initialised\n";
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    orb->destroy();
    return 0;
}
