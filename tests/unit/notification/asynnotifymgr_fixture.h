// The command thread: a queue, a log and commands that tell of themselves.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>
#include <vector>

#include "logging/logmgr.h"
#include "notification/asynnotifymgr.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/config_items.h"
#include "tests/support/wait_for.h"

namespace qv_test {

using NS_CORBA::AsynNotifyMgr;
using NS_CORBA::NotifyCmd;
using Texts = std::vector<std::string>;

/// What commands did, in order.
class Diary {
  public:
    void Add(const std::string& text) {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_texts.push_back(text);
    }
    Texts texts() const {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_texts;
    }
    bool Await(std::size_t count) const {
        return WaitFor([&] { return texts().size() >= count; });
    }

  private:
    mutable std::mutex m_lock;
    Texts m_texts;
};

/// Notes its run and its end, and does what it is given to do in between.
class Command : public NotifyCmd {
  public:
    using Work = std::function<int()>;

    Command(Diary& diary, std::string name, Work work = {})
        : m_diary(diary), m_name(std::move(name)), m_work(std::move(work)) {}
    ~Command() override { m_diary.Add("delete " + m_name); }

    int adaptAndNotify() override {
        m_diary.Add("run " + m_name);
        return m_work ? m_work() : 0;
    }

  private:
    Diary& m_diary;
    const std::string m_name;
    const Work m_work;
};

class AsynNotify : public ::testing::Test {
  protected:
    AsynNotify() {
        NS_CORBA::CorbaLogMgr::Destroy();
        NS_CORBA::CorbaLogMgr::Instance()->Init();
        m_log->Clear();
    }
    ~AsynNotify() override {
        OpenGate();
        AsynNotifyMgr::ExitThread();
        AsynNotifyMgr::Destroy();
        NS_CORBA::CorbaLogMgr::Destroy();
    }

    Command* Make(const std::string& name, Command::Work work = {}) {
        return new Command(m_diary, name, std::move(work));
    }
    int Push(NotifyCmd* command, int size = 0) { return NS_CORBA::Push(command, size); }
    /// Starts the thread and keeps it busy with a command until OpenGate.
    void StartBusy() {
        ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
        const std::shared_future<void> open = m_opened;
        Push(Make("busy", [open] {
            open.wait();
            return 0;
        }));
        ASSERT_TRUE(m_diary.Await(1));
    }
    void OpenGate() {
        if (!m_open.exchange(true)) {
            m_gate.set_value();
        }
    }
    static void Stop() {
        AsynNotifyMgr::ExitThread();
        AsynNotifyMgr::Destroy();
    }
    static auto& Queue() { return *AsynNotifyMgr::Instance()->msg_queue(); }

    Texts Logged(const std::string& category = "corbasys") {
        Texts texts;
        for (const LogEntry& entry : m_log->Entries(category)) {
            EXPECT_EQ(entry.file, "asynnotifymgr");
            EXPECT_EQ(entry.function, "unknown");
            EXPECT_EQ(entry.level, category == "corbasys" ? -1 : 1);
            texts.push_back(entry.text);
        }
        return texts;
    }

    ScopedLogCapture m_log;
    ScopedConfigItems m_items;
    Diary m_diary;

  private:
    std::promise<void> m_gate;
    std::shared_future<void> m_opened = m_gate.get_future().share();
    std::atomic<bool> m_open{false};
};

}  // namespace qv_test
