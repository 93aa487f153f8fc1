#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace qv_test {

/// What a fake notification service is told to do and what it was asked, by operation name as in the IDL
/// ("create_channel", "push_structured_event", ...). Attributes count as operations
/// ("default_supplier_admin", "push_consumers"). Thread-safe; actions run on the calling thread without any
/// lock.
class NotifyScript {
  public:
    /// Runs at the start of each call, before it has any effect, with the number of that call from 1 on. It
    /// may raise, which is then what the caller sees, or wait. An empty one takes it off.
    using Action = std::function<void(int call)>;
    void On(const std::string& operation, Action action);
    /// Every call from now on raises such an exception.
    template <class Exception>
    void Raise(const std::string& operation) {
        On(operation, [](int) { throw Exception(); });
    }
    /// The operation takes effect no more and returns a nil reference; false undoes it. Only for operations
    /// that return a reference: the mapping has no null sequences.
    void ReturnNil(const std::string& operation, bool nil = true);

    /// Calls that come from now on stay in the operation until Release. They are counted when they come.
    void Block(const std::string& operation);
    void Release(const std::string& operation);
    void ReleaseAll();

    /// Calls that came so far, those that raised or still wait too.
    int Count(const std::string& operation) const;
    /// All calls in the order in which they came.
    std::vector<std::string> Calls() const;
    /// Waits until `operation` was called `count` times; false when that doesn't come about in 30 seconds.
    bool WaitForCalls(const std::string& operation, int count) const;
    /// Forgets the calls; actions and blocks stay, and calls are numbered from 1 again.
    void ClearCalls();

    /// For the servants: notes a call, runs its action, waits where it is blocked. True when the result is
    /// to be nil.
    bool Enter(const std::string& operation);

  private:
    int CountLocked(const std::string& operation) const;

    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    std::map<std::string, Action> m_actions;
    std::set<std::string> m_nil;
    std::set<std::string> m_blocked;
    std::vector<std::string> m_calls;
};

}  // namespace qv_test
