#include "standalone/file_log_service.h"

#include <unistd.h>

#include <filesystem>
#include <utility>

#include "standalone/report.h"

namespace qv_standalone {
namespace {

/// A category becomes a file name, so it must not lead out of the directory.
bool IsUsableCategory(const std::string& category) {
    static constexpr const char* kAllowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.";
    return !category.empty() && category[0] != '.' && category.size() < 200 &&
           category.find_first_not_of(kAllowed) == std::string::npos;
}

}  // namespace

FileLogService::FileLogService(FileLogOptions options)
    : m_options(std::move(options)),
      m_process(getpid()),
      m_timer(
          m_options.flush_interval, [this] { FlushAll(); }, [this] { FlushWritten(); }) {}

FileLogService::~FileLogService() = default;

NS_LOG_SERVICE1::LogHandle* FileLogService::OpenLog(const std::string& bundle, const std::string& module,
                                                    const std::string& category) {
    if (!IsUsableCategory(category)) {
        Report("no log for \"" + category + "\" of " + bundle + "/" + module +
               ": a category consists of letters, digits, dots, \"_\" and \"-\"");
        return nullptr;
    }
    std::lock_guard<std::mutex> guard(m_lock);
    auto& file = m_files[category];
    if (file) {
        return file.get();
    }
    const std::string path = (std::filesystem::path(m_options.directory) / (category + ".log")).string();
    try {
        std::filesystem::create_directories(m_options.directory);
        file = std::make_unique<LogFile>(path, m_options.limits, [this] { m_timer.Soon(); });
    } catch (const std::exception& error) {
        Report("the log " + path + " can't be opened (" + error.what() +
               "); what would go into it is not logged. Make its directory writable, or set log_dir or "
               "QV_LOG_DIR");
        m_files.erase(category);
        return nullptr;
    }
    if (m_atOnce) {
        file->StopWaiting();
    }
    return file.get();
}

int FileLogService::IsVerboseLog() {
    return m_options.verbose ? 1 : 0;
}

void FileLogService::FlushWritten() {
    std::lock_guard<std::mutex> guard(m_lock);
    for (auto& entry : m_files) {
        entry.second->FlushWritten();
    }
}

void FileLogService::StopWaiting() {
    if (getpid() != m_process) {
        return;
    }
    std::lock_guard<std::mutex> guard(m_lock);
    m_atOnce = true;
    for (auto& entry : m_files) {
        entry.second->StopWaiting();
    }
}

void FileLogService::FlushAll() {
    std::lock_guard<std::mutex> guard(m_lock);
    for (auto& entry : m_files) {
        entry.second->Flush();
    }
}

}  // namespace qv_standalone
