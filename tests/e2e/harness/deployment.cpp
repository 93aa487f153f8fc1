#include "tests/e2e/harness/deployment.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "demo/agent/core/password.h"
#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{30};

std::string UsersText() {
    return "[[user]]\nname = \"oss\"\npassword_hash = \"" + qv_demo::HashPassword(Deployment::kPassword) +
           "\"\n";
}

}  // namespace

Deployment::Deployment()
    : naming_port_(qv_test::FreePort()),
      agent_port_(qv_test::FreePort()),
      inventory_(Data("inventory.json")),
      log_dir_(dir_.File("log")) {
    ::chmod(dir_.Write("users.toml", UsersText()).c_str(), 0600);
    Set("NamingService_Host", std::string("\"") + kHost + "\"");
    Set("NamingService_Port", std::to_string(naming_port_));
    Set("CORBAAgent_Host", std::string("\"") + kHost + "\"");
    Set("CORBAAgent_Port", std::to_string(agent_port_));
    Set("IsInterceptorEnabled", "true");
    Set("ShakeHandWithOSS", "false");
    Set("TimerInterval", "1");
}

std::string Deployment::Program(const std::string& name) {
    return std::string(QV_BIN_DIR) + "/" + name;
}

std::string Deployment::Data(const std::string& name) {
    return std::string(QV_DEMO_DATA) + "/" + name;
}

void Deployment::StartNaming() {
    const std::string ior = dir_.File("ns.ior");
    fs::remove(ior);
    naming_ = std::make_unique<qv_test::ChildProcess>(
        std::vector<std::string>{Program("Naming_Service"), "-ORBEndpoint",
                                 "iiop://" + std::string(kHost) + ":" + std::to_string(naming_port_), "-o",
                                 ior, "-u", dir_.File("naming-data")});
    const bool ready = qv_test::WaitFor(
        [&] { return qv_test::ReadFile(ior).rfind("IOR:", 0) == 0 || !naming_->Running(); }, kPatience);
    ASSERT_TRUE(ready && naming_->Running()) << naming_->Err();
}

void Deployment::LoseNamingData() {
    fs::remove_all(dir_.File("naming-data"));
}

std::string Deployment::ConfigText() const {
    if (!whole_config_.empty()) {
        return whole_config_;
    }
    std::string text = "[agent]\n";
    for (const auto& [key, value] : settings_) {
        text += key + " = " + value + "\n";
    }
    return text + "[platform]\nenv_root = \".\"\nlog_flush_interval = 20\n";
}

qv_test::ChildProcess& Deployment::LaunchAgent() {
    const std::string config = dir_.Write("agent.toml", ConfigText());
    agent_ = std::make_unique<qv_test::ChildProcess>(
        std::vector<std::string>{Program("qv_demo_agent"), "--config", config, "--inventory", inventory_,
                                 "--users", dir_.File("users.toml"), "--log-dir", log_dir_});
    return *agent_;
}

void Deployment::StartAgent() {
    LaunchAgent();
    ASSERT_TRUE(agent_->WaitForOut("\nready\n", kPatience)) << agent_->Out() << agent_->Err();
}

std::vector<std::string> Deployment::OssCommand(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{Program("qv_demo_oss"), "--naming",
                                     std::string(kHost) + ":" + std::to_string(naming_port_), "--user",
                                     "oss"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

qv_test::RunResult Deployment::Oss(const std::vector<std::string>& arguments, const char* password) const {
    qv_test::ChildOptions options;
    options.env["QV_OSS_PASSWORD"] =
        password == nullptr ? std::nullopt : std::optional<std::string>(password);
    return qv_test::Run(OssCommand(arguments), options);
}

std::unique_ptr<qv_test::ChildProcess> Deployment::StartOss(const std::vector<std::string>& arguments) const {
    qv_test::ChildOptions options;
    options.env["QV_OSS_PASSWORD"] = kPassword;
    return std::make_unique<qv_test::ChildProcess>(OssCommand(arguments), options);
}

std::unique_ptr<qv_test::ChildProcess> Deployment::HoldSession(int hold_ms) const {
    auto oss = StartOss({"login", "--hold-ms", std::to_string(hold_ms)});
    EXPECT_TRUE(oss->WaitForOut("managers", kPatience)) << oss->Err();
    return oss;
}

std::string Deployment::Log(const std::string& name) const {
    return qv_test::ReadFile(fs::path(log_dir_) / name);
}

bool Deployment::WaitForLog(const std::string& name, const std::vector<std::string>& parts) const {
    return qv_test::WaitFor(
        [&] {
            const std::string text = Log(name);
            return std::all_of(parts.begin(), parts.end(),
                               [&](const std::string& part) { return text.find(part) != std::string::npos; });
        },
        kPatience);
}

std::size_t Deployment::AgentDescriptors() const {
    const fs::path directory = "/proc/" + std::to_string(agent_->pid()) + "/fd";
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

}  // namespace qv_e2e
