#include "tests/unit/notification/notify_script.h"

#include <algorithm>
#include <chrono>

namespace qv_test {

void NotifyScript::On(const std::string& operation, Action action) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_actions[operation] = std::move(action);
}

void NotifyScript::ReturnNil(const std::string& operation, bool nil) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (nil) {
        m_nil.insert(operation);
    } else {
        m_nil.erase(operation);
    }
}

void NotifyScript::Block(const std::string& operation) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_blocked.insert(operation);
}

void NotifyScript::Release(const std::string& operation) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_blocked.erase(operation);
    m_changed.notify_all();
}

void NotifyScript::ReleaseAll() {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_blocked.clear();
    m_changed.notify_all();
}

int NotifyScript::CountLocked(const std::string& operation) const {
    return static_cast<int>(std::count(m_calls.begin(), m_calls.end(), operation));
}

int NotifyScript::Count(const std::string& operation) const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return CountLocked(operation);
}

std::vector<std::string> NotifyScript::Calls() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_calls;
}

bool NotifyScript::WaitForCalls(const std::string& operation, int count) const {
    std::unique_lock<std::mutex> guard(m_lock);
    return m_changed.wait_for(guard, std::chrono::seconds(30),
                              [&] { return CountLocked(operation) >= count; });
}

void NotifyScript::ClearCalls() {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_calls.clear();
}

bool NotifyScript::Enter(const std::string& operation) {
    std::unique_lock<std::mutex> guard(m_lock);
    m_calls.push_back(operation);
    const int call = CountLocked(operation);
    m_changed.notify_all();
    m_changed.wait(guard, [&] { return m_blocked.count(operation) == 0; });
    const auto found = m_actions.find(operation);
    const Action action = found == m_actions.end() ? Action() : found->second;
    const bool nil = m_nil.count(operation) != 0;
    guard.unlock();
    if (action) {
        action(call);
    }
    return nil;
}

}  // namespace qv_test
