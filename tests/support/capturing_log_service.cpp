#include "tests/support/capturing_log_service.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace qv_test {

class CapturingLogService::Handle final : public NS_LOG_SERVICE1::LogHandle {
  public:
    Handle(CapturingLogService& service, std::string category)
        : m_service(service), m_category(std::move(category)) {}

    void Write(const std::string& file, const std::string& function, int line, int level,
               const std::string& text) override {
        m_service.Add({m_category, file, function, line, level, text});
    }

    void WriteFormat(const std::string& file, const std::string& function, int line, int level,
                     const char* format, ...) override __attribute__((format(printf, 6, 7))) {
        std::va_list args;
        va_start(args, format);
        char* text = nullptr;
        const int length = vasprintf(&text, format, args);
        va_end(args);
        if (length < 0) {
            return;
        }
        const std::unique_ptr<char, decltype(&free)> owner(text, &free);
        m_service.Add({m_category, file, function, line, level, text});
    }

  private:
    CapturingLogService& m_service;
    const std::string m_category;
};

CapturingLogService::CapturingLogService() = default;
CapturingLogService::~CapturingLogService() = default;

NS_LOG_SERVICE1::LogHandle* CapturingLogService::OpenLog(const std::string& bundle, const std::string& module,
                                                         const std::string& category) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_opened.push_back({bundle, module, category});
    if (m_refused.count(category) != 0) {
        return nullptr;
    }
    auto& handle = m_handles[category];
    if (!handle) {
        handle = std::make_unique<Handle>(*this, category);
    }
    return handle.get();
}

int CapturingLogService::IsVerboseLog() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_verbose;
}

void CapturingLogService::Refuse(const std::string& category) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_refused.insert(category);
}

void CapturingLogService::SetVerbose(int verbose) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_verbose = verbose;
}

void CapturingLogService::SetWriteHook(std::function<void(const LogEntry&)> hook) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_hook = std::move(hook);
}

std::vector<LogEntry> CapturingLogService::Entries() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_entries;
}

std::vector<LogEntry> CapturingLogService::Entries(const std::string& category) const {
    std::lock_guard<std::mutex> guard(m_lock);
    std::vector<LogEntry> wanted;
    for (const LogEntry& entry : m_entries) {
        if (entry.category == category) {
            wanted.push_back(entry);
        }
    }
    return wanted;
}

std::vector<OpenedLog> CapturingLogService::Opened() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_opened;
}

std::unique_ptr<LogEntry> CapturingLogService::Find(const std::string& category,
                                                    const std::string& part) const {
    std::lock_guard<std::mutex> guard(m_lock);
    for (const LogEntry& entry : m_entries) {
        if (entry.category == category && entry.text.find(part) != std::string::npos) {
            return std::make_unique<LogEntry>(entry);
        }
    }
    return nullptr;
}

bool CapturingLogService::Contains(const std::string& category, const std::string& part) const {
    return Find(category, part) != nullptr;
}

void CapturingLogService::Clear() {
    std::lock_guard<std::mutex> guard(m_lock);
    m_entries.clear();
    m_opened.clear();
}

void CapturingLogService::Add(const LogEntry& entry) {
    std::function<void(const LogEntry&)> hook;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        hook = m_hook;
    }
    if (hook) {
        hook(entry);
    }
    std::lock_guard<std::mutex> guard(m_lock);
    m_entries.push_back(entry);
}

ScopedLogCapture::ScopedLogCapture(Mode mode) : m_service(std::make_unique<CapturingLogService>()) {
    auto object = mode == kCapture ? qv_standalone::MakeServiceObject(*m_service) : nullptr;
    m_former = qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kLogService,
                                                   std::move(object));
}

ScopedLogCapture::~ScopedLogCapture() {
    qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kLogService,
                                        std::move(m_former));
}

}  // namespace qv_test
