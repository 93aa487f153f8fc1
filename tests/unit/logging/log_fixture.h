#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "logging/logmgr.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/config_items.h"

namespace qv_test {

/// Sees the members of the log manager that only what derives from it may see.
class LogMgrProbe : public NS_CORBA::CorbaLogMgr {
  public:
    using SecretParameters = std::map<std::string, std::vector<int>>;

    static const SecretParameters& Secrets(const NS_CORBA::CorbaLogMgr& manager) {
        return manager.*&LogMgrProbe::m_IfNameToParamPos;
    }
    static bool LogsOperations(const NS_CORBA::CorbaLogMgr& manager) {
        return manager.*&LogMgrProbe::m_bLogOperation;
    }
    static bool LogsNotifications(const NS_CORBA::CorbaLogMgr& manager) {
        return manager.*&LogMgrProbe::m_bLogNotify;
    }
    static bool LogsAlarms(const NS_CORBA::CorbaLogMgr& manager) {
        return manager.*&LogMgrProbe::m_bLogAlarm;
    }
};

/// A test with a capturing log service, a configuration store of its own, and a log manager that goes with
/// it.
class LogFixture : public ::testing::Test {
  protected:
    using Items = std::vector<std::pair<std::string, std::string>>;

    void TearDown() override { NS_CORBA::CorbaLogMgr::Destroy(); }

    /// Puts `items` into the store and opens the channels. @return what Init said
    bool InitLog(const Items& items = {}) {
        for (const auto& [key, value] : items) {
            config.Set(key, value);
        }
        return Manager().Init();
    }

    static NS_CORBA::CorbaLogMgr& Manager() { return *NS_CORBA::CorbaLogMgr::Instance(); }

    /// The categories that OpenLog was asked for, in order.
    std::vector<std::string> OpenedCategories() {
        std::vector<std::string> categories;
        for (const OpenedLog& log : capture->Opened()) {
            categories.push_back(log.category);
        }
        return categories;
    }

    ScopedLogCapture capture;
    ScopedConfigItems config;
};

/// Expects a record with all that the log service gets of it.
inline void ExpectEntry(const LogEntry& entry, const std::string& category, int level,
                        const std::string& file, int line, const std::string& text,
                        const std::string& function = "unknown") {
    EXPECT_EQ(entry.category, category);
    EXPECT_EQ(entry.level, level);
    EXPECT_EQ(entry.file, file);
    EXPECT_EQ(entry.function, function);
    EXPECT_EQ(entry.line, line);
    EXPECT_EQ(entry.text, text);
}

}  // namespace qv_test
