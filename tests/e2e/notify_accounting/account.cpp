#include "tests/e2e/notify_accounting/account.h"

#include <algorithm>
#include <set>

namespace qv_accounting {

namespace {

constexpr std::size_t kMostText = 1000;

class OneThread {
  public:
    OneThread(std::size_t thread, const Claim& claim, Account& account)
        : m_thread(thread), m_claim(claim), m_account(account) {}

    void Take(std::int32_t own) {
        if (!m_seen.insert(own).second) {
            if (m_repeated.insert(own).second) {
                ++m_account.repeated;
                Note("came twice", own);
            }
            return;
        }
        if (own < m_last) {
            ++m_account.reordered;
            Note("came behind " + std::to_string(m_last), own);
        }
        m_last = std::max(m_last, own);
    }

    void End() {
        m_account.got += m_seen.size();
        const std::int32_t begin = m_seen.empty() ? m_claim.begin : std::min(m_claim.begin, *m_seen.begin());
        const std::int32_t end = m_claim.until_the_end ? m_claim.end : m_last + 1;
        for (std::int32_t own = begin; own < end; ++own) {
            if (m_seen.count(own) == 0) {
                ++m_account.missing;
                Note("is missing", own);
            }
        }
    }

  private:
    void Note(const std::string& what, std::int32_t own) {
        if (m_account.text.size() < kMostText) {
            m_account.text +=
                "event " + std::to_string(own) + " of thread " + std::to_string(m_thread) + " " + what + "\n";
        }
    }

    const std::size_t m_thread;
    const Claim& m_claim;
    Account& m_account;
    std::set<std::int32_t> m_seen;
    std::set<std::int32_t> m_repeated;
    std::int32_t m_last = -1;
};

}  // namespace

Account Balance(const std::vector<std::int32_t>& arrivals, const std::vector<Claim>& claims) {
    Account account;
    std::vector<OneThread> threads;
    for (const Claim& claim : claims) {
        threads.emplace_back(threads.size(), claim, account);
    }
    for (const std::int32_t number : arrivals) {
        threads.at(static_cast<std::size_t>(number / kThreadStep)).Take(number % kThreadStep);
    }
    for (OneThread& thread : threads) {
        thread.End();
    }
    return account;
}

}  // namespace qv_accounting
