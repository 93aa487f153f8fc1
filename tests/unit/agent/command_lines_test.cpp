#include <sstream>

#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/interposed.h"

namespace qv_test {
namespace {

std::vector<std::string> Split(const std::string& text) {
    std::istringstream words(text);
    std::vector<std::string> result;
    for (std::string word; words >> word;) {
        result.push_back(word);
    }
    return result;
}

class CommandLines : public AgentTest {
  protected:
    CommandLines() {
        m_items.Set("NamingService_Host", "n1");
        m_items.Set("NotifyService_Host", "n2");
        m_items.Set("CORBAAgent_Host", "n3");
        m_items.Set("SSL_Profile", "ssl.conf");
        m_items.Set("NON_Profile", "non.conf");
        m_items.Set("CORBAAgent_SSLPort", "22003");
    }

    /// The agent's command without the part that differs at each start.
    std::string AgentCmdBehindId() {
        const std::string& cmd = Probe::CorbaAgentCmd();
        const std::string head = " -ORBId ORB-";
        EXPECT_EQ(head, cmd.substr(0, head.size()));
        const std::size_t end = cmd.find(' ', head.size());
        EXPECT_NE(std::string::npos, end);
        return cmd.substr(end);
    }

    std::vector<std::string> Argv() {
        return std::vector<std::string>(config().GetArgv(), config().GetArgv() + config().GetArgc());
    }

    /// What the configuration logs, with "COMMAND" for the agent's command.
    std::vector<std::string> ToldByReConfig() {
        m_log->Clear();
        EXPECT_TRUE(config().CorbaBaseAgentReConfig());
        std::vector<std::string> told;
        for (const LogEntry& entry : m_log->Entries()) {
            const std::size_t command = entry.text.find(Probe::CorbaAgentCmd());
            told.push_back(
                entry.category + " " + std::to_string(entry.level) + " " +
                (command == std::string::npos ? entry.text : entry.text.substr(0, command) + "COMMAND"));
        }
        return told;
    }

    /// Runs parse_args over `arguments`; the arguments kept.
    std::vector<std::string> Parse(std::vector<std::string> arguments) {
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        int argc = static_cast<int>(arguments.size());
        config().parse_args(argc, argv.data());
        return std::vector<std::string>(argv.begin(), argv.begin() + argc);
    }
};

TEST_F(CommandLines, Mode0IsPlainThroughout) {
    m_items.Set("SSLMode", "0");
    config().GetOption();
    EXPECT_EQ("Naming_Service -ORBEndpoint iiop://n1:12001 -o ../ns.ior", Probe::NamingServiceCmd());
    EXPECT_EQ(
        "Notify_Service -ORBSvcConf ../notify.conf -ORBInitRef "
        "NameService=corbaloc:iiop:n1:12001/NameService "
        "-ORBEndpoint iiop://n2:12002",
        Probe::NotifyServiceCmd());
    EXPECT_EQ(
        " -ORBInitRef NameService=corbaloc:iiop:n1:12001/NameService -ORBEndpoint iiop://n3:12003 "
        "-ORBSvcConf non.conf  -ORBCollocation no  -ORBPreferredInterfaces *=127.0.0.1",
        AgentCmdBehindId());
}

TEST_F(CommandLines, Mode1IsSslThroughout) {
    m_items.Set("SSLMode", "1");
    config().GetOption();
    EXPECT_EQ("Naming_Service -ORBEndpoint iiop://n1:12001/ssl_port=22001 -ORBSvcConf ssl.conf -o ../ns.ior",
              Probe::NamingServiceCmd());
    EXPECT_EQ(
        "Notify_Service -ORBSvcConf ../notify.conf -ORBInitRef "
        "NameService=corbaloc:ssliop:n1:22001/NameService "
        "-ORBEndpoint iiop://n2:12002/ssl_port=22002 -ORBSvcConf ssl.conf",
        Probe::NotifyServiceCmd());
    EXPECT_EQ(
        " -ORBInitRef NameService=corbaloc:ssliop:n1:22001/NameService "
        "-ORBEndpoint iiop://n3:12003/ssl_port=22003 -ORBSvcConf ssl.conf  -ORBCollocation no ",
        AgentCmdBehindId());
}

TEST_F(CommandLines, AnyOtherModeIsSplitBetweenTheTwo) {
    m_items.Set("SSLMode", "2");
    config().GetOption();
    EXPECT_EQ("Naming_Service -ORBEndpoint iiop://n1:12001/ssl_port=22001 -ORBSvcConf ssl.conf -o ../ns.ior",
              Probe::NamingServiceCmd());
    EXPECT_EQ(
        "Notify_Service -ORBSvcConf ../notify.conf -ORBInitRef "
        "NameService=corbaloc:iiop:n1:12001/NameService "
        "-ORBEndpoint iiop://n2:12002/ssl_port=22002 -ORBSvcConf ssl.conf",
        Probe::NotifyServiceCmd());
    EXPECT_EQ(
        " -ORBInitRef NameService=corbaloc:iiop:n1:12001/NameService -ORBEndpoint iiop://n3:12003 "
        "-ORBSvcConf non.conf  -ORBCollocation no ",
        AgentCmdBehindId());
}

TEST_F(CommandLines, DefaultsNameTheNodeAndNoProfile) {
    const ScopedConfigItems empty;
    config().GetOption();
    const std::string node = NodeName();
    EXPECT_EQ("Naming_Service -ORBEndpoint iiop://" + node + ":12001 -o ../ns.ior",
              Probe::NamingServiceCmd());
    EXPECT_EQ(" -ORBInitRef NameService=corbaloc:iiop:" + node + ":12001/NameService -ORBEndpoint iiop://" +
                  node + ":12003 -ORBSvcConf   -ORBCollocation no  -ORBPreferredInterfaces *=127.0.0.1",
              AgentCmdBehindId());
}

TEST_F(CommandLines, EachCommandIsLogged) {
    config().GetOption();
    ExpectLog(kDebug, 3, "command_lines",
              "[CorbaBaseAgentConfig::GetNamingServiceCmd] NamingServiceCmd is " + Probe::NamingServiceCmd(),
              "GetNamingServiceCmd] NamingServiceCmd is %s");
    ExpectLog(kDebug, 3, "command_lines",
              "[CorbaBaseAgentConfig::GetNotifyServiceCmd] NotifyServiceCmd is " + Probe::NotifyServiceCmd(),
              "GetNotifyServiceCmd] NotifyServiceCmd is %s");
    ExpectLog(kDebug, 3, "command_lines",
              "[CorbaBaseAgentConfig::GetCorbaAgentCmd] CorbaAgentCmd is " + Probe::CorbaAgentCmd(),
              "GetCorbaAgentCmd] CorbaAgentCmd is %s");
}

TEST_F(CommandLines, TheThreeAreComposedInOrder) {
    config().GetOption();
    std::vector<std::string> composed;
    for (const LogEntry& entry : m_log->Entries(kDebug)) {
        if (entry.level == 3 && entry.text.find("Cmd is ") != std::string::npos) {
            composed.push_back(entry.text.substr(0, entry.text.find(" is ")));
        }
    }
    EXPECT_EQ((std::vector<std::string>{"[CorbaBaseAgentConfig::GetNamingServiceCmd] NamingServiceCmd",
                                        "[CorbaBaseAgentConfig::GetNotifyServiceCmd] NotifyServiceCmd",
                                        "[CorbaBaseAgentConfig::GetCorbaAgentCmd] CorbaAgentCmd"}),
              composed);
}

TEST_F(CommandLines, ComposingTwiceAppends) {
    config().GetOption();
    const std::string naming = Probe::NamingServiceCmd();
    const std::string notify = Probe::NotifyServiceCmd();
    const std::string agent = Probe::CorbaAgentCmd();
    config().GetNamingServiceCmd();
    config().GetNotifyServiceCmd();
    config().GetCorbaAgentCmd();
    EXPECT_EQ(naming + naming, Probe::NamingServiceCmd());
    EXPECT_EQ(notify + notify, Probe::NotifyServiceCmd());
    EXPECT_EQ(agent, Probe::CorbaAgentCmd().substr(0, agent.size()));
    EXPECT_EQ(2 * agent.size(), Probe::CorbaAgentCmd().size());
    EXPECT_NE(agent, Probe::CorbaAgentCmd().substr(agent.size())) << "the second has an ORB id of its own";
}

TEST_F(CommandLines, AbsentAgentSslPortGivesTheDigit0) {
    m_items.Set("SSLMode", "1");
    m_items.Erase("CORBAAgent_SSLPort");
    config().GetOption();
    EXPECT_NE(std::string::npos,
              Probe::CorbaAgentCmd().find("-ORBEndpoint iiop://n3:12003/ssl_port=0 -ORBSvcConf ssl.conf "));
}

TEST_F(CommandLines, CollocationOfTheOptionIsKept) {
    m_items.Set("CORBAAgent_Option", "-ORBCollocation global -x");
    config().GetOption();
    EXPECT_EQ("-ORBCollocation global -x -ORBPreferredInterfaces *=127.0.0.1", Probe::CorbaAgentOption());
}

TEST_F(CommandLines, CollocationCountsOnlyWithItsBlank) {
    m_items.Set("CORBAAgent_Option", "-ORBCollocation");
    config().GetOption();
    EXPECT_EQ("-ORBCollocation -ORBCollocation no  -ORBPreferredInterfaces *=127.0.0.1",
              Probe::CorbaAgentOption());
}

TEST_F(CommandLines, PreferredInterfacesOfTheOptionAreKept) {
    m_items.Set("CORBAAgent_Option", "-ORBPreferredInterfaces *=10.1.1.1");
    config().GetOption();
    EXPECT_EQ("-ORBPreferredInterfaces *=10.1.1.1 -ORBCollocation no ", Probe::CorbaAgentOption());
}

TEST_F(CommandLines, PreferredInterfacesFollowHostAndLvsMode) {
    {
        const ScopedConfigItems items({}, "192.0.2.7", false);
        config().GetOption();
        EXPECT_EQ(" -ORBCollocation no  -ORBPreferredInterfaces *=192.0.2.7", Probe::CorbaAgentOption());
    }
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    const ScopedConfigItems items({}, "192.0.2.7", true);
    config().GetOption();
    EXPECT_EQ(" -ORBCollocation no ", Probe::CorbaAgentOption());
}

TEST_F(CommandLines, ReConfigSplitsTheAgentCommand) {
    EXPECT_TRUE(config().CorbaBaseAgentReConfig());
    EXPECT_EQ(Split(Probe::CorbaAgentCmd()), Argv());
    EXPECT_EQ("-ORBId", Argv().front());
    ExpectLog(kDebug, 2, "command_lines",
              "[CorbaBaseAgentConfig::CorbaBaseAgentReConfig] CorbaAgentCmd is " + Probe::CorbaAgentCmd(),
              "CorbaBaseAgentReConfig] CorbaAgentCmd is %s");
}

TEST_F(CommandLines, ReConfigPutsInEnvironmentValues) {
    const ScopedEnv env("QV_TEST_ARGUMENT", "from-the-environment");
    m_items.Set("CORBAAgent_Option", "$QV_TEST_ARGUMENT");
    EXPECT_TRUE(config().CorbaBaseAgentReConfig());
    EXPECT_THAT(Argv(), ::testing::Contains("from-the-environment"));
}

TEST_F(CommandLines, LongCommandIsCutAt1023Characters) {
    m_items.Set("CORBAAgent_Option", "-first " + std::string(2000, 'x') + " -last");
    EXPECT_TRUE(config().CorbaBaseAgentReConfig());
    ASSERT_GT(Probe::CorbaAgentCmd().size(), 2000u);
    EXPECT_EQ(Split(Probe::CorbaAgentCmd().substr(0, 1023)), Argv());
    EXPECT_EQ(std::string::npos, Argv().back().find_first_not_of('x'));
}

TEST_F(CommandLines, TheCutIsNotTold) {
    m_items.Set("CORBAAgent_Option", "-short");
    const std::vector<std::string> told = ToldByReConfig();
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    m_items.Set("CORBAAgent_Option", std::string(2000, 'x'));
    EXPECT_EQ(told, ToldByReConfig());
    EXPECT_FALSE(told.empty());
}

TEST_F(CommandLines, CommandOf1023CharactersIsWhole) {
    config().GetOption();
    const std::size_t rest = 1023 - Probe::CorbaAgentCmd().size() - 1;
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    m_items.Set("CORBAAgent_Option", std::string(rest, 'y') + "z");
    EXPECT_TRUE(config().CorbaBaseAgentReConfig());
    ASSERT_EQ(1023u, Probe::CorbaAgentCmd().size());
    EXPECT_EQ(Split(Probe::CorbaAgentCmd()), Argv());
}

TEST_F(CommandLines, UnsplittableCommandIsRefused) {
    const FailingSplit failing;
    EXPECT_FALSE(config().CorbaBaseAgentReConfig());
    ExpectLog(kDebug, 2, "command_lines",
              "[CorbaBaseAgentConfig::CorbaBaseAgentReConfig] string_to_argv failed!");
}

TEST_F(CommandLines, PrivateOptionsDoNotReachTheOrb) {
    m_items.Set("CORBAAgent_Option", "-ns /n.ior -keep -NTfile /x -out /o.ior");
    EXPECT_TRUE(config().CorbaBaseAgentReConfig());
    EXPECT_STREQ("/n.ior", Probe::NsIorFile());
    EXPECT_STREQ("file", Probe::NtIorFile());
    EXPECT_STREQ("/o.ior", Probe::OutIorFile());
    std::vector<std::string> expected;
    for (const std::string& word : Split(Probe::CorbaAgentCmd())) {
        if (word != "-ns" && word != "/n.ior" && word != "-NTfile" && word != "-out" && word != "/o.ior") {
            expected.push_back(word);
        }
    }
    EXPECT_EQ(expected, Argv());
}

TEST_F(CommandLines, ParseArgsTakesEachOptionWithItsValue) {
    EXPECT_EQ((std::vector<std::string>{"-ORBId", "a", "b", "c"}),
              Parse({"-ORBId", "a", "-ns", "n.ior", "b", "-nt", "t.ior", "-out", "o.ior", "c"}));
    EXPECT_STREQ("n.ior", Probe::NsIorFile());
    EXPECT_STREQ("t.ior", Probe::NtIorFile());
    EXPECT_STREQ("o.ior", Probe::OutIorFile());
}

TEST_F(CommandLines, ParseArgsIgnoresCase) {
    EXPECT_EQ(std::vector<std::string>{"-ORBx"},
              Parse({"-NS", "n.ior", "-nT", "t.ior", "-ORBx", "-Out", "o.ior"}));
    EXPECT_STREQ("n.ior", Probe::NsIorFile());
    EXPECT_STREQ("t.ior", Probe::NtIorFile());
    EXPECT_STREQ("o.ior", Probe::OutIorFile());
}

TEST_F(CommandLines, ParseArgsTakesAJoinedValue) {
    EXPECT_EQ(std::vector<std::string>{"next"}, Parse({"-nsn.ior", "-out   o.ior", "next"}));
    EXPECT_STREQ("n.ior", Probe::NsIorFile());
    EXPECT_STREQ("o.ior", Probe::OutIorFile());
}

TEST_F(CommandLines, ParseArgsTakesWhateverBeginsWithAnOption) {
    EXPECT_EQ(std::vector<std::string>{"-o"}, Parse({"-output=x", "-o"}));
    EXPECT_STREQ("put=x", Probe::OutIorFile());
}

TEST_F(CommandLines, OptionWithoutValueSetsNothing) {
    EXPECT_EQ((std::vector<std::string>{"-ORBx", "y"}), Parse({"-ns", "-ORBx", "y", "-out"}));
    EXPECT_EQ(nullptr, Probe::NsIorFile());
    EXPECT_EQ(nullptr, Probe::OutIorFile());
}

TEST_F(CommandLines, OptionBehindOneWithoutValueIsStillTaken) {
    EXPECT_TRUE(Parse({"-out", "-ns", "n.ior"}).empty());
    EXPECT_STREQ("n.ior", Probe::NsIorFile());
    EXPECT_EQ(nullptr, Probe::OutIorFile());
}

TEST_F(CommandLines, LastOfARepeatedOptionCounts) {
    EXPECT_TRUE(Parse({"-ns", "first", "-ns", "second"}).empty());
    EXPECT_STREQ("second", Probe::NsIorFile());
}

TEST_F(CommandLines, ParseArgsOfNothing) {
    EXPECT_TRUE(Parse({}).empty());
    EXPECT_EQ(nullptr, Probe::NsIorFile());
}

TEST_F(CommandLines, RightSubStrIsWhatFollowsTheFirstKey) {
    EXPECT_EQ("/etc/ssl/key.pem", config().GetRightSubStr("PEM:", "key_file PEM:/etc/ssl/key.pem"));
    EXPECT_EQ("a PEM:b", config().GetRightSubStr("PEM:", "PEM:a PEM:b"));
    EXPECT_EQ(" spaced ", config().GetRightSubStr("PEM:", "PEM: spaced "));
    EXPECT_EQ("", config().GetRightSubStr("PEM:", "pem:/etc/ssl/key.pem"));
    EXPECT_EQ("", config().GetRightSubStr("PEM:", "x PEM:"));
    EXPECT_EQ("", config().GetRightSubStr("PEM:", ""));
    EXPECT_EQ("text", config().GetRightSubStr("", "text"));
}

}  // namespace
}  // namespace qv_test
