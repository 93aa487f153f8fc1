#include "standalone/settings_table.h"

#include <algorithm>
#include <limits>

namespace qv_standalone {
namespace {

constexpr long long kMaxInt = std::numeric_limits<int>::max();
constexpr long long kMaxUnsigned = std::numeric_limits<unsigned int>::max();
constexpr long long kMaxPort = 65535;

constexpr Setting Flag(const char* group, const char* key, const char* initial, const char* meaning) {
    const bool on = initial[0] == '1';
    return {"agent", group, key, ValueType::kFlag, initial, 0, 1, "", meaning, on ? "false" : "true"};
}

constexpr Setting Number(const char* group, const char* key, const char* initial, long long min,
                         long long max, const char* unit, const char* meaning, const char* example) {
    return {"agent", group, key, ValueType::kInteger, initial, min, max, unit, meaning, example};
}

constexpr Setting Port(const char* group, const char* key, const char* initial, long long min,
                       const char* meaning, const char* example) {
    return Number(group, key, initial, min, kMaxPort, "TCP port", meaning, example);
}

constexpr Setting Text(const char* group, const char* key, const char* initial, const char* meaning,
                       const char* example) {
    return {"agent", group, key, ValueType::kText, initial, 0, 0, "", meaning, example};
}

constexpr Setting Platform(const char* group, const char* key, ValueType type, const char* initial,
                           long long min, long long max, const char* unit, const char* meaning,
                           const char* example) {
    return {"platform", group, key, type, initial, min, max, unit, meaning, example};
}

constexpr const char* kOrb = "ORB threads and transport";
constexpr const char* kNaming = "Naming service";
constexpr const char* kNotify = "Notification service";
constexpr const char* kAgent = "The agent's own ORB";
constexpr const char* kEms = "The EMS as OSSs see it";
constexpr const char* kSessions = "Sessions and iterators";
constexpr const char* kEvents = "Notifications";
constexpr const char* kTime = "Time strings";
constexpr const char* kLogs = "Logs and statistics";
constexpr const char* kPlaces = "Places of the stand-alone platform";
constexpr const char* kLogFiles = "Log files";
constexpr const char* kNode = "The node";
constexpr const char* kSecurity = "Users and risks";
constexpr const char* kCallChain = "Call chain";

constexpr Setting kAgentSettings[] = {
    Flag(
        kOrb, "ORBThreadPoolEnable", "1",
        "Serve requests by a pool of threads. When off, the one thread that runs the agent serves them all."),
    Number(kOrb, "ORBThreadNum", "4", 0, 1024, "threads",
           "Size of the thread pool: at most so many requests are served at once. 0 means 4.", "8"),
    Number(kSessions, "TimerInterval", "30", 1, kMaxUnsigned, "s",
           "How often the agent looks after its sessions, iterators and the notification channel.", "10"),
    Number(kSessions, "IteratorMaxNum", "50", 0, kMaxUnsigned, "iterators",
           "Most iterators that all OSSs together may hold at once.", "100"),
    Number(kSessions, "IteratorRestriction", "20", 0, kMaxUnsigned, "iterators",
           "Most iterators that one OSS may hold at once.", "10"),
    Number(kSessions, "TimeOut", "60", 1, kMaxUnsigned, "s",
           "An iterator that was not used for so long is destroyed.", "300"),
    Number(kEvents, "EventQueueLength", "1000", 0, kMaxUnsigned, "events",
           "Most events kept while the notification channel is out of service; further ones are dropped.",
           "5000"),
    Port(kNaming, "NamingService_Port", "12001", 1, "Port of the naming service for plain IIOP.", "22801"),
    Port(kNaming, "NamingService_SSLPort", "22001", 0, "Port of the naming service for SSL.", "22802"),
    Port(kNotify, "NotifyService_Port", "12002", 1,
         "Port for plain IIOP that NotifyService_AutoStart gives the notification service.", "22803"),
    Port(kNotify, "NotifyService_SSLPort", "22002", 0,
         "Port for SSL that NotifyService_AutoStart gives the notification service.", "22804"),
    Port(kAgent, "CORBAAgent_Port", "12003", 0,
         "Port on which the agent listens for plain IIOP. References that OSSs keep hold it, so it should "
         "not change.",
         "22805"),
    Port(kAgent, "CORBAAgent_SSLPort", "0", 0,
         "Port on which the agent listens for SSL. 0: a new one at each start; set it with SSLMode 1.",
         "22806"),
    Flag(kNaming, "NamingService_AutoStart", "0",
         "Start the naming service with the agent and end it with the agent. The program is looked for in "
         "cbb/nbi/nbicbb_3p/share/bin beside env_root."),
    Flag(kNotify, "NotifyService_AutoStart", "0",
         "Start the notification service with the agent and end it with the agent. The program is looked for "
         "in cbb/nbi/nbicbb_3p/share/bin beside env_root."),
    Number(kOrb, "SSLMode", "0", 0, 1, "", "Transport: 0 plain IIOP, 1 SSL.", "1"),
    Text(kEms, "IDLVersion", "2.0", "Version of the interface; part of the session factory's name.",
         "\"3.5\""),
    Text(kEms, "EmsLocation", "local", "Location of the EMS, told to OSSs that ask for its properties.",
         "\"Site A\""),
    Text(kEms, "EmsName", "Zorvex/KLV",
         "Name of the EMS, of the form vendor/instance; part of the session factory's name.",
         "\"Zorvex/North\""),
    Text(kEms, "EmsType", "Tarvo oFabric M4400", "Type of the EMS.", "\"Tarvo oFabric M4400\""),
    Text(kNaming, "NamingService_Name", "Naming_Service",
         "File name of the program that is started as naming service.", "\"Naming_Service\""),
    Text(kNaming, "NamingService_Host", "localhost",
         "Host of the naming service. \"localhost\" and \"127.0.0.1\" stand for the name of this node.",
         "\"ns.example.net\""),
    Text(kNaming, "NamingService_Option", "-o ../ns.ior",
         "Further arguments of the naming service. Relative paths count from its own directory.",
         "\"-o /var/lib/agent/ns.ior\""),
    Text(kNotify, "NotifyService_Name", "Notify_Service",
         "File name of the program that is started as notification service.", "\"Notify_Service\""),
    Text(kNotify, "NotifyService_Host", "localhost",
         "Host that NotifyService_AutoStart has the notification service listen on. \"localhost\" and "
         "\"127.0.0.1\" stand for the name of this node.",
         "\"nt.example.net\""),
    Text(kNotify, "NotifyService_Option", "-ORBSvcConf ../notify.conf",
         "Further arguments of the notification service. Relative paths count from its own directory.",
         "\"-ORBSvcConf /etc/agent/notify.conf\""),
    Text(kAgent, "CORBAAgent_Host", "localhost",
         "Host name or address in the agent's references. \"localhost\" and \"127.0.0.1\" stand for the name "
         "of this node.",
         "\"192.0.2.10\""),
    Text(kAgent, "CORBAAgent_Option", "",
         "Further arguments of the agent's ORB, and the agent's own: -ns FILE and -nt FILE name the files "
         "that hold the references of the naming and the notification service, -out FILE the file that gets "
         "the session factory's reference.",
         "\"-ns /var/lib/agent/ns.ior\""),
    Flag(kSessions, "bUseIPAndPort", "0", "Name the host of an object reference together with its port."),
    Flag(kEvents, "PersistenceEventChannel", "0",
         "Keep the notification channel and its consumers over a restart of the agent."),
    Number(kEvents, "AlarmTimeout", "1800", 0, kMaxUnsigned, "s", "Lifetime of an alarm in the channel.",
           "3600"),
    Number(kEvents, "HeartBeatTimeout", "30", 0, kMaxUnsigned, "s", "Lifetime of a heartbeat in the channel.",
           "60"),
    Number(kEvents, "OtherEventTimeout", "86400", 0, kMaxUnsigned, "s",
           "Lifetime of every other event in the channel.", "7200"),
    Text(kOrb, "SSL_Profile", "",
         "ORB service configuration file for SSL, with the paths of key, certificate and authorities.",
         "\"/etc/agent/ssl.conf\""),
    Text(kOrb, "NON_Profile", "", "ORB service configuration file without SSL.", "\"/etc/agent/plain.conf\""),
    Flag(kLogs, "IsInterceptorEnabled", "0",
         "Count the calls of each operation, in the file CORBAAgentStatisticInfo.dat beside the logs. Each "
         "request rewrites that file, which is dear."),
    Flag(kSessions, "ShakeHandWithOSS", "1", "Ping each OSS and end the session of one that doesn't answer."),
    Number(kSessions, "StrategyOfReleasingSession", "1", 0, kMaxInt, "",
           "What happens when all sessions are taken and another OSS logs in: 1 ends the oldest session, any "
           "other value refuses the newcomer.",
           "0"),
    Number(kSessions, "MaxSessionOfFIFO", "10", 0, kMaxInt, "sessions", "Most sessions at once.", "20"),
    Number(kSessions, "MaxIntervalOfSilentTime", "3600", 0, kMaxInt, "s",
           "A session from which nothing came for so long is ended. 0: silence ends none.", "600"),
    Number(kTime, "TimeZoneRefPoint", "0", 0, 127, "",
           "Zone of time strings: 0 UTC, with a Z at the end; any other value local time, without one.", "1"),
    Number(kTime, "TimeShowAppearance", "0", 0, 127, "",
           "Form of time strings: 1 day/month/year hour:minute:second; any other value "
           "yearmonthdayhourminutesecond.0.",
           "1"),
    Flag(kEvents, "bAlarmWithAffectObjName", "0",
         "Name the affected objects in alarms; for the agent bundle, nothing else looks at it."),
    Flag(kEvents, "bSingleThreadPushEvent", "1", "Push events one after the other, never two at once."),
    Flag(kLogs, "bLogOperation", "0", "Write each request and its outcome to corbaoper.log."),
    Flag(kLogs, "bLogNotify", "0", "Write each event that was sent to corbanotify.log, alarms included."),
    Flag(kLogs, "bLogAlaram", "0", "Write what the bundle itself notes on alarms to corba_alarm.log."),
};

constexpr Setting kPlatformSettings[] = {
    Platform(
        kPlaces, "env_root", ValueType::kText, "", 0, 0, "",
        "Root of the installation; companion services that the agent starts are looked for beside it, in "
        "../cbb/nbi/nbicbb_3p/share/bin from it. The environment variable QV_ENV_ROOT goes before it. A "
        "relative path counts from this file's directory.",
        "\"/opt/agent/root\""),
    Platform(kPlaces, "cfg_dir", ValueType::kText, "", 0, 0, "",
             "Directory of the configuration files. The environment variable QV_CFG_DIR goes before it. A "
             "relative path counts from this file's directory.",
             "\"/etc/agent\""),
    Platform(kLogFiles, "log_dir", ValueType::kText, "log", 0, 0, "",
             "Directory of the log files and of the statistics, for this agent alone. The environment "
             "variable QV_LOG_DIR goes before it. A relative path counts from this file's directory, the "
             "default from the working directory.",
             "\"/var/log/agent\""),
    Platform(kLogFiles, "log_level", ValueType::kInteger, "3", -1, 99, "",
             "Records up to this level are written: 0 and 1 failures, 2 failed configuration, 3 tracing. "
             "Records without a level are always written.",
             "2"),
    Platform(kLogFiles, "log_max_size", ValueType::kInteger, "20", 1, 4096, "MiB",
             "A log file that would grow beyond this is put aside and a new one begun.", "100"),
    Platform(kLogFiles, "log_max_files", ValueType::kInteger, "10", 1, 1000, "files",
             "How many files put aside are kept of each log.", "5"),
    Platform(kLogFiles, "log_flush_interval", ValueType::kInteger, "1000", 10, 60000, "ms",
             "A record reaches the file after so long at the latest; failures at once, records without a "
             "level some 10 ms later.",
             "200"),
    Platform(kLogFiles, "verbose_log", ValueType::kFlag, "0", 0, 1, "",
             "Write what an operation gave back, too, not only what it was called with.", "true"),
    Platform(kNode, "host_ip", ValueType::kText, "", 0, 0, "",
             "IP address of this node. Empty: the first address of an interface that is up.",
             "\"192.0.2.10\""),
    Platform(
        kNode, "lvs_mode", ValueType::kFlag, "0", 0, 1, "",
        "The node stands behind a virtual server address, so that its own address must not be preferred.",
        "true"),
    Platform(kNode, "oss_addresses", ValueType::kTextList, "", 0, 0, "",
             "Addresses or host names of the OSSs that may call. Empty: everybody may call. Enforced by the "
             "bundle.",
             "[\"192.0.2.20\", \"oss.example.net\"]"),
};

constexpr Setting kSecuritySettings[] = {
    Platform(kSecurity, "users_file", ValueType::kText, "", 0, 0, "",
             "File of the users that may log in, which qv_user writes; changes count at once. Empty: nobody "
             "can log in. A relative path counts from this file's directory.",
             "\"users.toml\""),
    Platform(kSecurity, "login_max_failures", ValueType::kInteger, "5", 1, 1000, "logins",
             "After so many failed logins in a row a user is locked.", "3"),
    Platform(kSecurity, "login_lock_time", ValueType::kInteger, "300", 1, 86400, "s",
             "How long a user stays locked, and how long a failed login counts.", "60"),
    Platform(kSecurity, "login_max_checks", ValueType::kInteger, "2", 1, 64, "checks",
             "Passwords that are checked at once; each check takes 64 MiB of memory.", "4"),
    Platform(kSecurity, "login_max_waiting", ValueType::kInteger, "16", 0, 1000, "logins",
             "Logins that wait for their check; further ones are refused at once.", "8"),
    Platform(kSecurity, "risk_file", ValueType::kText, "", 0, 0, "",
             "File with a table [risk] of operations and their levels: 0 not audited, 1 minor risk, 2 risk. "
             "Empty: built-in levels. A relative path counts from this file's directory.",
             "\"risk.toml\""),
    Platform(kSecurity, "audit_file", ValueType::kText, "", 0, 0, "",
             "SQLite file of the audited operations, for this agent alone; qv_audit shows it. Empty: "
             "audit.db beside the logs. A relative path counts from this file's directory.",
             "\"audit.db\""),
};

constexpr Setting kCallChainSettings[] = {
    Platform(kCallChain, "call_chain", ValueType::kFlag, "0", 0, 1, "",
             "Write a span for each request to callchain.jsonl beside the logs, which qv_spans shows. Read "
             "once, when the first request comes.",
             "true"),
    Platform(kCallChain, "call_chain_collector", ValueType::kText, "", 0, 0, "",
             "URL of a collector that gets the spans, too, as Zipkin v2 JSON. Empty: none.",
             "\"http://127.0.0.1:9411/api/v2/spans\""),
    Platform(kCallChain, "call_chain_queue", ValueType::kInteger, "10000", 100, 1000000, "spans",
             "Most spans that wait to be written, and as many that wait for the collector; further ones are "
             "dropped and counted.",
             "50000"),
    Platform(kCallChain, "call_chain_max_size", ValueType::kInteger, "20", 1, 4096, "MiB",
             "A callchain.jsonl that would grow beyond this is put aside and a new one begun.", "100"),
    Platform(kCallChain, "call_chain_max_files", ValueType::kInteger, "10", 1, 1000, "files",
             "How many files put aside are kept.", "5"),
};

template <std::size_t kCount>
void Append(std::vector<Setting>& table, const Setting (&settings)[kCount]) {
    table.insert(table.end(), settings, settings + kCount);
}

std::vector<Setting> MakeTable() {
    std::vector<Setting> table;
    Append(table, kAgentSettings);
    Append(table, kPlatformSettings);
    Append(table, kSecuritySettings);
    Append(table, kCallChainSettings);
    return table;
}

}  // namespace

const std::vector<Setting>& AllSettings() {
    static const std::vector<Setting> table = MakeTable();
    return table;
}

std::vector<std::string> GroupsOf(const std::string& table) {
    std::vector<std::string> groups;
    for (const Setting& setting : AllSettings()) {
        if (table == setting.table &&
            std::find(groups.begin(), groups.end(), setting.group) == groups.end()) {
            groups.emplace_back(setting.group);
        }
    }
    return groups;
}

const Setting* FindSetting(const std::string& table, const std::string& key) {
    for (const Setting& setting : AllSettings()) {
        if (table == setting.table && key == setting.key) {
            return &setting;
        }
    }
    return nullptr;
}

const char* TypeName(ValueType type) {
    switch (type) {
        case ValueType::kFlag:
            return "flag";
        case ValueType::kInteger:
            return "integer";
        case ValueType::kText:
            return "text";
        case ValueType::kTextList:
            return "list of texts";
    }
    return "";
}

std::string InitialAsToml(const Setting& setting) {
    switch (setting.type) {
        case ValueType::kFlag:
            return setting.initial[0] == '1' ? "true" : "false";
        case ValueType::kInteger:
            return setting.initial;
        case ValueType::kText:
            return std::string("\"") + setting.initial + "\"";
        case ValueType::kTextList:
            return "[]";
    }
    return "";
}

std::string RangeText(const Setting& setting) {
    if (setting.type != ValueType::kInteger) {
        return "";
    }
    return std::to_string(setting.min) + " to " + std::to_string(setting.max);
}

}  // namespace qv_standalone
