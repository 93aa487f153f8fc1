#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <vector>

namespace qv_notify {

/// Brings the operations of several threads together: those that wait while a transaction is under way share
/// the next one. The first of them carries it out for all, so that a thread by itself waits for no other.
/// Any thread may call Run.
class GroupCommit {
  public:
    using Operation = std::function<void()>;
    /// Carries out operations from the first to before the last, all in one transaction; throws when it has
    /// taken them back.
    using Transaction = std::function<void(const std::vector<const Operation*>& operations)>;

    explicit GroupCommit(Transaction transaction);

    /// Carries the operation out, in a transaction, maybe by another thread. Throws what made it fail; the
    /// failure of another operation doesn't. An operation may be called a second time, after the first has
    /// been taken back.
    void Run(const Operation& operation);

  private:
    struct Waiting {
        const Operation* operation = nullptr;
        bool done = false;
        std::exception_ptr failure;
        std::condition_variable turn;
    };

    void CarryOut(const std::vector<Waiting*>& group);
    void CarryOutAlone(Waiting& waiting);

    const Transaction m_transaction;
    std::mutex m_lock;
    bool m_busy = false;              // somebody carries out a group
    std::vector<Waiting*> m_waiting;  // the next group, whose first will carry it out
};

}  // namespace qv_notify
