// A log service that keeps nothing, so that what is measured is the library's own work.
#pragma once

#include <memory>
#include <string>

#include "platform/log_service.h"
#include "standalone/registry.h"

class SilentLog final : public NS_LOG_SERVICE1::LogSvcInterface, private NS_LOG_SERVICE1::LogHandle {
  public:
    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string&, const std::string&, const std::string&) override {
        return this;
    }
    int IsVerboseLog() override { return 1; }

    void Write(const std::string&, const std::string&, int, int, const std::string& text) override {
        last_size = text.size();
    }
    void WriteFormat(const std::string&, const std::string&, int, int, const char*, ...) override
        __attribute__((format(printf, 6, 7))) {}

    std::size_t last_size = 0;  ///< of the last record's text
};

/// Puts the log in the place of the platform's, with the operation log switched on.
inline void UseSilentLog(SilentLog& log) {
    qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kLogService,
                                        qv_standalone::MakeServiceObject(log));
    qv_standalone::ConfigItems items;
    items.items.push_back({"bLogOperation", "1"});
    qv_standalone::UseConfigItems(items);
}
