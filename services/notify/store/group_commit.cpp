#include "services/notify/store/group_commit.h"

#include <utility>

namespace qv_notify {

GroupCommit::GroupCommit(Transaction transaction) : m_transaction(std::move(transaction)) {}

void GroupCommit::Run(const Operation& operation) {
    Waiting own;
    own.operation = &operation;
    std::unique_lock<std::mutex> lock(m_lock);
    m_waiting.push_back(&own);
    own.turn.wait(lock, [&] { return own.done || (!m_busy && m_waiting.front() == &own); });
    if (!own.done) {
        m_busy = true;
        const std::vector<Waiting*> group = std::exchange(m_waiting, {});
        lock.unlock();
        CarryOut(group);
        lock.lock();
        m_busy = false;
        for (Waiting* one : group) {
            one->done = true;
            one->turn.notify_one();  // under the lock: then it is still there
        }
        if (!m_waiting.empty()) {
            m_waiting.front()->turn.notify_one();
        }
    }
    if (own.failure) {
        std::rethrow_exception(own.failure);
    }
}

void GroupCommit::CarryOut(const std::vector<Waiting*>& group) {
    if (group.size() > 1) {
        try {
            std::vector<const Operation*> operations;
            operations.reserve(group.size());
            for (const Waiting* one : group) {
                operations.push_back(one->operation);
            }
            m_transaction(operations);
            return;
        } catch (...) {
            // One of them spoilt it for the others, or there was no memory for all at once.
        }
    }
    for (Waiting* one : group) {
        CarryOutAlone(*one);
    }
}

void GroupCommit::CarryOutAlone(Waiting& waiting) {
    try {
        m_transaction({waiting.operation});
    } catch (...) {
        waiting.failure = std::current_exception();
    }
}

}  // namespace qv_notify
