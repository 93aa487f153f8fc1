#include "platform/thread_context.h"

#include <utility>

#include "standalone/thread_context_data.h"
#include "standalone/thread_setup.h"
#include "standalone/uuid.h"

namespace NS_UTIL {

ThreadContextInfo::ThreadContextInfo() : m_data(nullptr) {}

ThreadContextInfo::ThreadContextInfo(const ThreadContextInfo& other)
    : m_data(other.m_data == nullptr ? nullptr : new Data(*other.m_data)) {}

ThreadContextInfo::ThreadContextInfo(ThreadContextInfo&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)) {}

ThreadContextInfo& ThreadContextInfo::operator=(const ThreadContextInfo& other) {
    ThreadContextInfo copy(other);
    std::swap(m_data, copy.m_data);
    return *this;
}

ThreadContextInfo& ThreadContextInfo::operator=(ThreadContextInfo&& other) noexcept {
    std::swap(m_data, other.m_data);
    return *this;
}

ThreadContextInfo::~ThreadContextInfo() {
    delete m_data;
}

std::string ThreadContextInfo::GenerateUUID() {
    return qv_standalone::RandomUUID();
}

std::string ThreadContextInfo::GetUserInfo() const {
    return m_data == nullptr ? "" : m_data->user_info;
}

std::string ThreadContextInfo::GetInterfaceName() const {
    return m_data == nullptr ? "" : m_data->interface_name;
}

ThreadContextInfo ThreadContextAccess::Make(ThreadContextInfo::Data data) {
    ThreadContextInfo context;
    context.m_data = new ThreadContextInfo::Data(std::move(data));
    return context;
}

std::string ThreadContextAccess::TaskOf(const ThreadContextInfo& context) {
    return context.m_data == nullptr ? "" : context.m_data->task;
}

ThreadContextInfo& CurrentThreadContext() {
    thread_local ThreadContextInfo context;
    return context;
}

ThreadContextMgr::ThreadContextMgr() = default;
ThreadContextMgr::~ThreadContextMgr() = default;

ThreadContextMgr* ThreadContextMgr::Instance() {
    static auto* const instance = new ThreadContextMgr;
    return instance;
}

ThreadContextInfo ThreadContextMgr::GetThreadContext() {
    return CurrentThreadContext();
}

}  // namespace NS_UTIL

namespace qv_standalone {

void SetThreadContext(const std::string& userInfo, const std::string& interfaceName) {
    NS_UTIL::CurrentThreadContext() =
        NS_UTIL::ThreadContextAccess::Make({RandomUUID(), userInfo, interfaceName});
}

void ClearThreadContext() {
    NS_UTIL::CurrentThreadContext() = NS_UTIL::ThreadContextInfo();
}

}  // namespace qv_standalone
