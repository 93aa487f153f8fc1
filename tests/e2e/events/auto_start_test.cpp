// The agent starts its naming and notification service itself.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>

#include "tests/e2e/events/event_run.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

namespace fs = std::filesystem;

/// The services that an agent starts, with the programs laid out where it looks for them. They are killed, by
/// their ids, when the object goes, unless the agent has ended them.
class Companions {
  public:
    explicit Companions(EventRun& run) : share_(run.dir().path() / "cbb/nbi/nbicbb_3p/share") {
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
    ~Companions() {
        for (const char* const name : {"naming", "notify"}) {
            if (const pid_t pid = Pid(name); Runs(pid)) {
                ::kill(pid, SIGKILL);
            }
        }
    }
    Companions(const Companions&) = delete;
    Companions& operator=(const Companions&) = delete;

    /// Of "naming" or "notify"; -1 when it never got so far.
    pid_t Pid(const std::string& name) const {
        const std::string text = qv_test::ReadFile(share_ / (name + ".pid"));
        return text.empty() ? -1 : std::stoi(text);
    }

    /// Whether that process is one of these services, and not another that has taken the id since.
    bool Runs(pid_t pid) const {
        std::error_code gone;
        return pid > 0 && fs::read_symlink("/proc/" + std::to_string(pid) + "/cwd", gone) == share_ / "bin";
    }

  private:
    const fs::path share_;
};

TEST(CompanionServices, StartAndEndWithTheAgent) {
    EventRun run(true);
    const Companions companions(run);
    run.StartAgent();
    const pid_t naming = companions.Pid("naming");
    const pid_t notify = companions.Pid("notify");
    ASSERT_TRUE(companions.Runs(naming));
    ASSERT_TRUE(companions.Runs(notify));
    const auto oss = run.Listen({"--types", kAllButHeartbeats, "--count", "5"});
    run.Raise(5, 50);
    EXPECT_EQ(oss->Wait(), 0) << oss->Err();
    EXPECT_EQ(ShownIds(*oss), run.RaisedIds(IsNoHeartbeat));
    run.agent().Signal(SIGTERM);
    EXPECT_EQ(run.agent().Wait(), 0) << run.agent().Err();
    EXPECT_TRUE(qv_test::WaitFor([&] { return !companions.Runs(naming) && !companions.Runs(notify); }));
}

}  // namespace
}  // namespace qv_e2e
