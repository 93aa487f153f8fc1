#include "ssl_server.h"

#include <algorithm>
#include <mutex>

#include "orb/portability.h"
#include "tests/support/child_process.h"
#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"

namespace qv_test {
namespace {

std::mutex g_lock;
Strings g_lines;

void Collect(const std::string& line) {
    const std::lock_guard<std::mutex> guard(g_lock);
    g_lines.push_back(line);
}

}  // namespace

SslTest::SslTest() : ssl_port(FreePort()) {
    ForgetReported();
    qv_orb::SetDiagnosticSink(&Collect);
}

SslTest::~SslTest() {
    server.reset();
    qv_orb::SetDiagnosticSink(nullptr);
}

void SslTest::Serve(const std::string& profile) {
    SeamServer::Options options;
    options.args = {"-ORBSvcConf", profile};
    options.ssl_port = ssl_port;
    server = std::make_unique<SeamServer>(options);
}

std::string SslTest::Call(const std::string& ior, const std::string& profile, const std::string& operation,
                          const std::string& argument) {
    return RunPeer(profile, {"call", ior, operation, argument});
}

std::string SslTest::RunPeer(const std::string& profile, const Strings& args) {
    ChildOptions options;
    options.env["ORB_SEAM_PEER_PROFILE"] =
        profile.empty() ? std::nullopt : std::optional<std::string>(profile);
    Strings command = {PeerProgram()};
    command.insert(command.end(), args.begin(), args.end());
    const RunResult result = qv_test::Run(command, options);
    TakeTurns();
    return result.code == 0 ? result.out.substr(0, result.out.find('\n')) : "failed: " + result.err;
}

bool SslTest::Reported(const std::string& text) {
    return WaitFor([&] { return CountReported(text) > 0; }, std::chrono::seconds(10));
}

int SslTest::CountReported(const std::string& text) {
    const std::lock_guard<std::mutex> guard(g_lock);
    return static_cast<int>(std::count_if(g_lines.begin(), g_lines.end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
    }));
}

std::string SslTest::AllReported() {
    const std::lock_guard<std::mutex> guard(g_lock);
    std::string all;
    for (const std::string& line : g_lines) {
        all += line + "\n";
    }
    return all;
}

void SslTest::ForgetReported() {
    const std::lock_guard<std::mutex> guard(g_lock);
    g_lines.clear();
}

}  // namespace qv_test
