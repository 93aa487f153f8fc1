#include "tests/e2e/harness/deployment.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>

#include "standalone/password.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{30};

/// A port of kHost that nobody uses, below those that the system hands out by itself: dozens of clients take
/// from there between the choice and the start of the server. Each call gives another one.
int ServerPort() {
    constexpr int kFirst = 20000;
    constexpr int kLast = 32000;
    static std::set<int> given;
    std::random_device chance;
    std::uniform_int_distribution<int> ports(kFirst, kLast);
    for (;;) {
        const int port = ports(chance);
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_ANY);
        const bool free = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        ::close(fd);
        if (free && given.insert(port).second) {
            return port;
        }
    }
}

std::string UserText(const std::string& name, const std::string& password) {
    return "[[user]]\nname = \"" + name + "\"\npassword_hash = \"" + qv_standalone::HashPassword(password) +
           "\"\n";
}

}  // namespace

Deployment::Deployment()
    : naming_port_(ServerPort()),
      notify_port_(ServerPort()),
      agent_port_(ServerPort()),
      inventory_(Data("inventory.json")),
      log_dir_(dir_.File("log")) {
    ::chmod(dir_.Write("users.toml", UserText("oss", kPassword)).c_str(), 0600);
    Set("NamingService_Host", std::string("\"") + kHost + "\"");
    Set("NamingService_Port", std::to_string(naming_port_));
    Set("CORBAAgent_Host", std::string("\"") + kHost + "\"");
    Set("CORBAAgent_Port", std::to_string(agent_port_));
    Set("IsInterceptorEnabled", "true");
    Set("ShakeHandWithOSS", "false");
    Set("TimerInterval", "1");
    SetPlatform("env_root", "\".\"");
    SetPlatform("log_flush_interval", "20");
    SetPlatform("users_file", "\"users.toml\"");
    // With the four threads of the ORB, one stays free for those who are logged in.
    SetPlatform("login_max_checks", "2");
    SetPlatform("login_max_waiting", "1");
}

void Deployment::AddUser(const std::string& name, const std::string& password) {
    const std::string users = qv_test::ReadFile(dir_.File("users.toml"));
    ::chmod(dir_.Write("users.toml", users + UserText(name, password)).c_str(), 0600);
}

std::string Deployment::Program(const std::string& name) {
    return std::string(QV_BIN_DIR) + "/" + name;
}

std::string Deployment::Data(const std::string& name) {
    return std::string(QV_DEMO_DATA) + "/" + name;
}

void Deployment::UseSsl(const std::string& server_profile, const std::string& oss_profile) {
    server_profile_ = server_profile;
    oss_profile_ = oss_profile;
    naming_ssl_port_ = ServerPort();
    notify_ssl_port_ = ServerPort();
    agent_ssl_port_ = ServerPort();
    Set("SSLMode", "1");
    Set("SSL_Profile", "\"" + server_profile + "\"");
    Set("NamingService_SSLPort", std::to_string(naming_ssl_port_));
    Set("NotifyService_SSLPort", std::to_string(notify_ssl_port_));
    Set("CORBAAgent_SSLPort", std::to_string(agent_ssl_port_));
}

std::string Deployment::EndPoint(int port, int ssl_port) const {
    return "iiop://" + std::string(kHost) + ":" + std::to_string(port) +
           (ssl_port == 0 ? "" : "/ssl_port=" + std::to_string(ssl_port));
}

std::vector<std::string> Deployment::WithProfile(std::vector<std::string> command) const {
    if (!server_profile_.empty()) {
        command.insert(command.end(), {"-ORBSvcConf", server_profile_});
    }
    return command;
}

std::string Deployment::NamingAddress() const {
    return std::string(kHost) + ":" + std::to_string(naming_ssl_port_ == 0 ? naming_port_ : naming_ssl_port_);
}

void Deployment::StartNaming() {
    const std::string ior = dir_.File("ns.ior");
    fs::remove(ior);
    naming_ = std::make_unique<qv_test::ChildProcess>(
        WithProfile({Program("Naming_Service"), "-ORBEndpoint", EndPoint(naming_port_, naming_ssl_port_),
                     "-o", ior, "-u", dir_.File("naming-data")}));
    const bool ready = qv_test::WaitFor(
        [&] { return qv_test::ReadFile(ior).rfind("IOR:", 0) == 0 || !naming_->Running(); }, kPatience);
    ASSERT_TRUE(ready && naming_->Running()) << naming_->Err();
}

void Deployment::SendEvents(bool persistent_channel) {
    Set("NotifyService_Host", std::string("\"") + kHost + "\"");
    Set("NotifyService_Port", std::to_string(notify_port_));
    Set("PersistenceEventChannel", persistent_channel ? "true" : "false");
    agent_arguments_ = {"--events"};
    agent_options_.working_dir = dir_.str();  // where the reference of a persistent channel is kept
}

void Deployment::StartNotify() {
    const std::string scheme = server_profile_.empty() ? "iiop:" : "ssliop:";
    notify_ = std::make_unique<qv_test::ChildProcess>(
        WithProfile({Program("Notify_Service"), "-ORBInitRef",
                     "NameService=corbaloc:" + scheme + NamingAddress() + "/NameService", "-ORBEndpoint",
                     EndPoint(notify_port_, notify_ssl_port_), "-u", dir_.File("notify-data")}));
    ASSERT_TRUE(notify_->WaitForOut("serving", kPatience)) << notify_->Err();
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
    text += "[platform]\n";
    for (const auto& [key, value] : platform_settings_) {
        text += key + " = " + value + "\n";
    }
    return text;
}

qv_test::ChildProcess& Deployment::LaunchAgent() {
    const std::string config = dir_.Write("agent.toml", ConfigText());
    std::vector<std::string> command{
        Program("qv_demo_agent"), "--config", config, "--inventory", inventory_, "--log-dir", log_dir_};
    command.insert(command.end(), agent_arguments_.begin(), agent_arguments_.end());
    agent_ = std::make_unique<qv_test::ChildProcess>(command, agent_options_);
    return *agent_;
}

void Deployment::StartAgent() {
    LaunchAgent();
    ASSERT_TRUE(agent_->WaitForOut("\nready\n", kPatience)) << agent_->Out() << agent_->Err();
}

std::vector<std::string> Deployment::OssCommand(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{Program("qv_demo_oss"), "--user", "oss", "--naming"};
    // Without SSL an OSS goes to the plain port.
    command.push_back(oss_profile_.empty() ? std::string(kHost) + ":" + std::to_string(naming_port_)
                                           : NamingAddress());
    if (!oss_profile_.empty()) {
        command.insert(command.end(), {"--ssl-profile", oss_profile_});
    }
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
