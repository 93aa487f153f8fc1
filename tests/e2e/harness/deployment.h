#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

namespace qv_e2e {

/// A naming service, a demo agent and OSSs, each a process of its own, with files in a directory and ports of
/// their own. Whatever still runs is killed when the object goes. The user "oss" has the password of
/// kPassword.
class Deployment {
  public:
    static constexpr const char* kHost = "127.0.0.2";
    static constexpr const char* kPassword = "correct horse battery";

    Deployment();

    /// A setting of the agent's next start; `value` as TOML has it.
    void Set(const std::string& key, const std::string& value) { settings_[key] = value; }
    /// The same for the settings of the stand-alone platform.
    void SetPlatform(const std::string& key, const std::string& value) { platform_settings_[key] = value; }
    /// An environment variable of the agent's next start.
    void SetAgentEnvironment(const std::string& name, const std::string& value) {
        agent_options_.env[name] = value;
    }
    /// Lets another user log in.
    void AddUser(const std::string& name, const std::string& password);
    /// Contents of the configuration file of the agent's next start, in place of the settings.
    void SetWholeConfig(const std::string& contents) { whole_config_ = contents; }
    /// Writes the settings made since the agent's start to its configuration file.
    void RewriteConfig() { dir_.Write("agent.toml", ConfigText()); }
    void SetInventory(const std::string& path) { inventory_ = path; }
    void SetLogDir(const std::string& path) { log_dir_ = path; }

    /// From the next starts on, all by SSL: the servers with one service configuration file, the OSSs with
    /// another.
    void UseSsl(const std::string& server_profile, const std::string& oss_profile);
    /// Which service configuration file the OSSs use that are started from now on; none when it is empty.
    void SetOssProfile(const std::string& profile) { oss_profile_ = profile; }

    void StartNaming();
    void KillNaming() { naming_.reset(); }
    /// Takes away what the naming service has kept on disk.
    void LoseNamingData();

    /// Lets the agent's next start send events through the notification service.
    void SendEvents(bool persistent_channel);
    /// Starts the notification service, with what its last run left on disk, and waits until it serves.
    void StartNotify();
    /// Ends it as kill -9 does.
    void KillNotify() { notify_.reset(); }
    qv_test::ChildProcess& notify() { return *notify_; }

    /// Starts the agent and waits until it is ready. A failure of the test when it doesn't become so.
    void StartAgent();
    /// Starts the agent and lets it do what it will.
    qv_test::ChildProcess& LaunchAgent();
    /// Ends the agent as a power failure would.
    void KillAgent() { agent_.reset(); }

    qv_test::ChildProcess& agent() { return *agent_; }
    qv_test::ChildProcess& naming() { return *naming_; }

    /// Runs an OSS to its end. Without `password` it gets none.
    qv_test::RunResult Oss(const std::vector<std::string>& arguments, const char* password = kPassword) const;
    /// Starts an OSS.
    std::unique_ptr<qv_test::ChildProcess> StartOss(const std::vector<std::string>& arguments) const;
    /// Starts an OSS and waits until it is logged in; it stays so for `hold_ms`.
    std::unique_ptr<qv_test::ChildProcess> HoldSession(int hold_ms) const;

    const qv_test::TempDir& dir() const { return dir_; }
    int naming_port() const { return naming_port_; }
    int notify_port() const { return notify_port_; }
    int agent_port() const { return agent_port_; }
    /// Of these 0 without SSL.
    int naming_ssl_port() const { return naming_ssl_port_; }
    int notify_ssl_port() const { return notify_ssl_port_; }
    int agent_ssl_port() const { return agent_ssl_port_; }
    std::string log_dir() const { return log_dir_; }
    std::string Log(const std::string& name) const;
    /// Waits until that file of the log directory holds all `parts` at once; false when it never does.
    bool WaitForLog(const std::string& name, const std::vector<std::string>& parts) const;

    /// How many file descriptors the agent has open.
    std::size_t AgentDescriptors() const;

    static std::string Program(const std::string& name);
    static std::string Data(const std::string& name);

  private:
    std::string EndPoint(int port, int ssl_port) const;
    /// Adds what a server needs for SSL.
    std::vector<std::string> WithProfile(std::vector<std::string> command) const;
    std::string NamingAddress() const;
    std::vector<std::string> OssCommand(const std::vector<std::string>& arguments) const;
    std::string ConfigText() const;

    const qv_test::TempDir dir_;
    const int naming_port_;
    const int notify_port_;
    const int agent_port_;
    int naming_ssl_port_ = 0;
    int notify_ssl_port_ = 0;
    int agent_ssl_port_ = 0;
    std::string server_profile_;
    std::string oss_profile_;
    std::map<std::string, std::string> settings_;
    std::map<std::string, std::string> platform_settings_;
    qv_test::ChildOptions agent_options_;
    std::vector<std::string> agent_arguments_;
    std::string whole_config_;
    std::string inventory_;
    std::string log_dir_;
    std::unique_ptr<qv_test::ChildProcess> naming_;
    std::unique_ptr<qv_test::ChildProcess> notify_;
    std::unique_ptr<qv_test::ChildProcess> agent_;
};

}  // namespace qv_e2e
