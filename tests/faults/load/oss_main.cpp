// An OSS that logs in and calls the EMS's managers at a steady rate, through all that happens to either of
// them, until it is killed.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <thread>

#include "tests/faults/load/calls.h"

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPauseAfterFailure{200};

[[noreturn]] void CallForever(qv_faults::Calls& calls, double per_second) {
    const auto step =
        std::chrono::duration_cast<steady_clock::duration>(std::chrono::duration<double>(1 / per_second));
    auto due = steady_clock::now();
    for (;;) {
        // What a slow call took is not made up for.
        due = std::max(due + step, steady_clock::now());
        if (!calls.Next()) {
            due = std::max(due, steady_clock::now() + kPauseAfterFailure);
        }
        std::this_thread::sleep_until(due);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const CORBA::ORB_var orb = qv_faults::StartOrb(argc, argv);
    qv_faults::LoadSettings settings;
    CLI::App app{"An OSS of the fault campaign. Options of the ORB are taken, too."};
    app.add_option("--naming", settings.naming, "Naming service as HOST:PORT")->required();
    app.add_option("--user", settings.user, "User to log in as")->required();
    app.add_option("--password-file", settings.password_file, "File with the user's two passwords")
        ->required();
    app.add_option("--journal", settings.journal, "File that takes a line for each call")->required();
    app.add_option("--incarnation", settings.incarnation, "Part of the tokens of this process")->required();
    app.add_option("--per-second", settings.per_second, "Calls in a second")->check(CLI::Range(0.1, 1000.0));
    app.add_option("--raise", settings.events_per_second, "Events in a second that the EMS is told to raise");
    app.add_option("--element", settings.element, "Number of the network element that is written to");
    CLI11_PARSE(app, argc, argv);
    qv_faults::Calls calls(orb.in(), settings);
    CallForever(calls, settings.per_second);
} catch (const CORBA::Exception& exception) {
    std::fprintf(stderr, "qv_fault_oss: %s\n", exception._name());
    return 1;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "qv_fault_oss: %s\n", exception.what());
    return 1;
}
