// Another utility library, written to the declarations alone, with answers that can be told from those of the
// stand-alone one.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/huge_task_mgr.h"
#include "platform/secure_string.h"
#include "platform/self_util_common.h"
#include "platform/text.h"
#include "platform/thread_context.h"

namespace NS_UTIL {

struct ThreadContextInfo::Data {};

ThreadContextInfo::ThreadContextInfo() : m_data(nullptr) {}
ThreadContextInfo::ThreadContextInfo(const ThreadContextInfo&) : ThreadContextInfo() {}
ThreadContextInfo::ThreadContextInfo(ThreadContextInfo&&) noexcept : m_data(nullptr) {}
// There is nothing to assign.
ThreadContextInfo& ThreadContextInfo::operator=(const ThreadContextInfo&) = default;
ThreadContextInfo& ThreadContextInfo::operator=(ThreadContextInfo&&) noexcept {
    return *this;
}
ThreadContextInfo::~ThreadContextInfo() {
    m_data = nullptr;
}
std::string ThreadContextInfo::GenerateUUID() {
    return "id-of-the-other-platform";
}
std::string ThreadContextInfo::GetUserInfo() const {
    return "[other][other]";
}
std::string ThreadContextInfo::GetInterfaceName() const {
    return "other";
}

ThreadContextMgr::ThreadContextMgr() = default;
ThreadContextMgr* ThreadContextMgr::Instance() {
    static auto* const instance = new ThreadContextMgr;
    return instance;
}
ThreadContextInfo ThreadContextMgr::GetThreadContext() {
    return {};
}

HugeTaskMgr::HugeTaskMgr() = default;
HugeTaskMgr* HugeTaskMgr::Instance() {
    static auto* const instance = new HugeTaskMgr;
    return instance;
}
bool HugeTaskMgr::IsSynHTsk() {
    return false;
}
void HugeTaskMgr::RemoveHTskInfo(const ThreadContextInfo& /*context*/) {}

SelfUtilCommon::SelfUtilCommon() = default;
SelfUtilCommon* SelfUtilCommon::Instance() {
    static auto* const instance = new SelfUtilCommon;
    return instance;
}
std::string SelfUtilCommon::getEnvValue(const std::string& name) {
    return "other-" + name;
}
std::string SelfUtilCommon::GetValByTag(const std::string& /*text*/, const std::string& beginTag,
                                        const std::string& endTag, const int& /*beginTagLength*/) {
    return beginTag + endTag;
}

bool IsDigit(const std::string& text) {
    return text == "0";
}

}  // namespace NS_UTIL

extern "C" {

int vsnprintf_s(char* dest, std::size_t size, std::size_t /*count*/, const char* format, std::va_list args) {
    const int length = std::vsnprintf(dest, size, format, args);
    return length < static_cast<int>(size) ? length : -1;
}

int snprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int length = vsnprintf_s(dest, size, count, format, args);
    va_end(args);
    return length;
}

int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count) {
    const std::size_t length = std::min({std::strlen(src), count, size - 1});
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}
}
