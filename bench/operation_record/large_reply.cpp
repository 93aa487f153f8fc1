// What the record of a large reply costs: time beside marshalling the same reply in memory, and memory beyond
// the record's own text. One process calls itself; an interceptor measures where the reply leaves.
//
// usage: bench_large_reply [MEGABYTES [ROUNDS [FILE]]]
#include <json/json.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "bench/operation_record/silent_log.h"
#include "large_replyC.h"
#include "large_replyS.h"
#include "logging/logmgr.h"

#include <tao/ORBInitializer_Registry.h>

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// A value of /proc/self/status in MB.
double StatusMegabytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::strtod(line.c_str() + key.size() + 1, nullptr) / 1024;
        }
    }
    return 0;
}

/// Lets the peak of the memory begin anew. Linux alone, as all of the library.
void ResetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

struct Sample {
    double marshalMs = 0;
    double recordMs = 0;
    double peakMegabytes = 0;  ///< beyond what the process had before the record
};

class Measuring : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    explicit Measuring(std::vector<Sample>& samples) : samples_(samples) {}

    char* name() override { return CORBA::string_dup("measuring"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo_ptr info) override {
        NS_CORBA::CorbaLogMgr::Instance()->WriteOperRecord(info, 0);
    }
    void send_reply(PortableInterceptor::ServerRequestInfo_ptr info) override {
        Sample sample;
        malloc_trim(0);  // both begin with a heap that keeps nothing for later
        auto begin = Clock::now();
        { const CORBA::Any_var marshalled = info->result(); }  // the reply's value, marshalled once in memory
        sample.marshalMs = MillisecondsSince(begin);
        malloc_trim(0);
        const double before = StatusMegabytes("VmRSS");
        ResetPeak();
        begin = Clock::now();
        NS_CORBA::CorbaLogMgr::Instance()->WriteOperRecord(info, 1);
        sample.recordMs = MillisecondsSince(begin);
        sample.peakMegabytes = StatusMegabytes("VmHWM") - before;
        samples_.push_back(sample);
    }
    void send_exception(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_other(PortableInterceptor::ServerRequestInfo_ptr) override {}

  private:
    std::vector<Sample>& samples_;
};

class Initializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    explicit Initializer(std::vector<Sample>& samples) : samples_(samples) {}
    void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        PortableInterceptor::ServerRequestInterceptor_var interceptor = new Measuring(samples_);
        info->add_server_request_interceptor(interceptor);
    }

  private:
    std::vector<Sample>& samples_;
};

class SourceServant : public POA_bench::Source {
  public:
    bench::Octets* read(CORBA::ULong size) override {
        auto* const octets = new bench::Octets;
        octets->length(size);
        // No zero among them: at a zero the record would end.
        std::generate_n(octets->get_buffer(), size,
                        [n = 0u]() mutable { return static_cast<CORBA::Octet>(1 + n++ % 255); });
        return octets;
    }
};

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

Json::Value Report(const std::vector<Sample>& samples, std::size_t textSize) {
    std::vector<double> marshal, record, ratio, memory;
    const double text = static_cast<double>(textSize) / (1 << 20);
    for (const Sample& sample : samples) {
        marshal.push_back(sample.marshalMs);
        record.push_back(sample.recordMs);
        ratio.push_back(sample.recordMs / sample.marshalMs);
        memory.push_back(sample.peakMegabytes - text);
    }
    Json::Value report;
    report["marshal_ms"] = Median(marshal);
    report["record_ms"] = Median(record);
    report["ratio"] = Median(ratio);
    report["text_mb"] = text;
    report["memory_beyond_text_mb"] = Median(memory);
    report["rounds"] = static_cast<Json::UInt64>(samples.size());
    for (const Sample& sample : samples) {
        Json::Value round;
        round["marshal_ms"] = sample.marshalMs;
        round["record_ms"] = sample.recordMs;
        round["memory_beyond_text_mb"] = sample.peakMegabytes - text;
        report["samples"].append(round);
    }
    return report;
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned megabytes = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 16;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 9;
    SilentLog log;
    UseSilentLog(log);
    std::vector<Sample> samples;
    PortableInterceptor::ORBInitializer_var initializer = new Initializer(samples);
    PortableInterceptor::register_orb_initializer(initializer);
    std::vector<std::string> words = {"bench", "-ORBEndpoint", "iiop://127.0.0.1:0"};
    std::vector<char*> args;
    args.reserve(words.size());
    for (std::string& word : words) {
        args.push_back(&word[0]);
    }
    int count = static_cast<int>(args.size());
    CORBA::ORB_var orb = CORBA::ORB_init(count, args.data());
    if (!NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "bench_large_reply: the log manager could not be initialised\n";
        return 1;
    }
    CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    PortableServer::POA_var poa = PortableServer::POA::_narrow(object);
    SourceServant servant;
    PortableServer::ObjectId_var id = poa->activate_object(&servant);
    object = poa->id_to_reference(id);
    PortableServer::POAManager_var manager = poa->the_POAManager();
    manager->activate();
    bench::Source_var source = bench::Source::_narrow(object);
    for (int round = 0; round < rounds; ++round) {
        bench::Octets_var octets = source->read(megabytes << 20);
    }
    const Json::Value report = Report(samples, log.last_size);
    std::cout << "reply of " << megabytes << " MB, medians of " << rounds << " rounds\n"
              << std::fixed << std::setprecision(1) << "  marshalled in memory   "
              << report["marshal_ms"].asDouble() << " ms\n"
              << "  record                 " << report["record_ms"].asDouble() << " ms, "
              << report["ratio"].asDouble() << " times\n"
              << "  memory beyond the text " << report["memory_beyond_text_mb"].asDouble() << " MB (text "
              << report["text_mb"].asDouble() << " MB)\n";
    if (argc > 3) {
        std::ofstream(argv[3]) << report << '\n';
    }
    orb->destroy();
    return 0;
}
