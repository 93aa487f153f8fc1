#include "tests/e2e/events/companions.h"

#include <signal.h>

namespace qv_e2e {

namespace fs = std::filesystem;

Companions::Companions(EventRun& run) : share_(run.dir().path() / "cbb/nbi/nbicbb_3p/share") {
    fs::create_directories(share_ / "bin");
    fs::create_directories(run.dir().path() / "ems");  // the environment root
    for (const char* const name : {"Naming_Service", "Notify_Service"}) {
        fs::create_symlink(Deployment::Program(name), share_ / "bin" / name);
    }
    run.SetPlatform("env_root", "\"ems\"");
    run.Set("NamingService_AutoStart", "true");
    run.Set("NamingService_Option", "\"-o ../ns.ior -u ../naming-data -p ../naming.pid\"");
    run.Set("NotifyService_AutoStart", "true");
    run.Set("NotifyService_Option", "\"-u ../notify-data -p ../notify.pid\"");
}

Companions::~Companions() {
    for (const char* const name : {"naming", "notify"}) {
        if (const pid_t pid = Pid(name); Runs(pid)) {
            ::kill(pid, SIGKILL);
        }
    }
}

pid_t Companions::Pid(const std::string& name) const {
    const std::string text = qv_test::ReadFile(share_ / (name + ".pid"));
    return text.empty() ? -1 : std::stoi(text);
}

bool Companions::Runs(pid_t pid) const {
    std::error_code gone;
    return pid > 0 && fs::read_symlink("/proc/" + std::to_string(pid) + "/cwd", gone) == share_ / "bin";
}

}  // namespace qv_e2e
