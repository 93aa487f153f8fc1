#pragma once

#include <filesystem>

#include "notification/eventmgr.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/notification/fake_channel.h"

namespace NS_CORBA {

/// Opens the event manager where no operation leads.
class EventMgrProbe {
  public:
    static auto& Factory(EventMgr& manager) { return manager.m_channelFactory; }
    static bool Ready(const EventMgr& manager) { return manager.m_bReady; }
};

}  // namespace NS_CORBA

namespace qv_test {

using namespace CosNotifyChannelAdmin;
using NS_CORBA::EventMgr;
using NS_CORBA::EventMgrProbe;
using Texts = std::vector<std::string>;

/// The process's directory, where "channel.ior" lies.
class ScopedDirectory {
  public:
    explicit ScopedDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    ~ScopedDirectory() { std::filesystem::current_path(m_former); }

  private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

class EventManager : public AgentTest {
  protected:
    EventManager() { UseFactory(m_service.Factory()); }

    /// The agent finds this object when it asks for the factory.
    void UseFactory(CORBA::Object_ptr object) {
        const CORBA::Object_var factory = object;
        const CORBA::String_var ior = m_orb->object_to_string(object);
        std::string option = "-nt" + m_dir.Write("nt.ior", ior.in());
        char* argv[] = {option.data(), nullptr};
        int argc = 1;
        config().parse_args(argc, argv);
    }
    void BePersistent() {
        m_items.Set("PersistenceEventChannel", "1");
        config().GetOption();
        ASSERT_TRUE(config().PersistentEventChannel());
    }
    void SaveReference(CORBA::Object_ptr object) {
        m_dir.Write("channel.ior", CORBA::String_var(m_orb->object_to_string(object)).in());
    }
    std::string SavedReference() { return ReadFile(m_dir.File("channel.ior")); }
    std::string Reference(CORBA::Object_ptr object) {
        return CORBA::String_var(m_orb->object_to_string(object)).in();
    }

    /// What the event manager logged, in order: texts of the system channel as they are, exceptions as the
    /// text given to TaException.
    Texts Logged() {
        Texts texts;
        for (const LogEntry& entry : m_log->Entries()) {
            if (entry.file != "eventmgr") {
                continue;
            }
            EXPECT_EQ(entry.function, "unknown");
            EXPECT_GT(entry.line, 0);
            EXPECT_EQ(entry.level, entry.category == kDebug ? 1 : -1) << entry.text;
            texts.push_back(entry.category == kDebug ? TextOfException(entry.text) : entry.text);
        }
        return texts;
    }
    static std::string TextOfException(const std::string& text) {
        const std::size_t end = text.find("==>");
        EXPECT_EQ(text.find("Exception: "), 0u) << text;
        EXPECT_NE(text.find("IDL:", end), std::string::npos) << text;
        return text.substr(11, end - 11);
    }

    bool Alive(std::size_t channel) { return m_service.Channels().at(channel).alive; }
    Texts Calls() { return m_service.script().Calls(); }
    NotifyScript& script() { return m_service.script(); }

    CORBA::ORB_var m_orb = MakeOrb();
    FakeNotifyService m_service{m_orb.in()};
    EventMgr m_manager;
    int m_id = 77;
    EventMgr::ChannelVar m_channel;

  private:
    ScopedDirectory m_directory{m_dir.path()};
};

inline constexpr char kCreateFailed[] = "[EventMgr::Init] CreateChannel failed!";
inline constexpr char kPersistentRaised[] =
    "[EventMgr::CreatePersistentEventChannel] Exception raised during creating notification channel!";

}  // namespace qv_test
