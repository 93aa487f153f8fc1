#include "tests/e2e/notify_accounting/consumers.h"

#include <algorithm>
#include <utility>

#include "tests/e2e/notify_accounting/insist.h"

namespace qv_accounting {

void Consumer::Book::Enter(std::int32_t number) {
    std::unique_lock<std::mutex> lock(mutex);
    arrivals.push_back(number);
    std::int32_t& own = last.at(static_cast<std::size_t>(number / kThreadStep));
    own = std::max(own, number % kThreadStep);
    changed.wait(lock, [this] { return !hangs; });
}

Consumer::Consumer(std::string name, CosNotifyChannelAdmin::ConsumerAdmin_ptr admin,
                   const Suppliers& suppliers)
    : m_name(std::move(name)), m_servant([&] {
          m_book->last.resize(suppliers.Threads(), -1);
          return Insist([&] {
              return qv_test::RecordingConsumer::Connect(
                  admin, [book = m_book](const CosNotification::StructuredEvent& event) {
                      book->Enter(qv_test::NumberOf(event));
                  });
          });
      }()) {
    for (std::size_t thread = 0; thread < suppliers.Threads(); ++thread) {
        // The next one may have been under way while it connected.
        m_claims.push_back({suppliers.TakenOf(thread) + 1, 0, true});
    }
}

Consumer::~Consumer() {
    LetGo();
    if (!m_left) {
        m_servant->End();
    }
}

std::vector<std::int32_t> Consumer::Arrivals() const {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    return m_book->arrivals;
}

bool Consumer::HasAny() const {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    return !m_book->arrivals.empty();
}

bool Consumer::HasOneOfEach() const {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    return std::all_of(m_book->last.begin(), m_book->last.end(), [](std::int32_t own) { return own >= 0; });
}

void Consumer::Hang() {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    m_book->hangs = true;
}

void Consumer::LetGo() {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    m_book->hangs = false;
    m_book->changed.notify_all();
}

void Consumer::Leave() {
    LetGo();
    m_left = true;
    Insist([this] { m_servant->Proxy()->disconnect_structured_push_supplier(); });
    m_servant->End();
}

bool Consumer::HasTheLast(const Suppliers& suppliers) const {
    const std::lock_guard<std::mutex> guard(m_book->mutex);
    for (std::size_t thread = 0; thread < suppliers.Threads(); ++thread) {
        if (m_book->last[thread] + 1 < suppliers.TakenOf(thread)) {
            return false;
        }
    }
    return true;
}

Account Consumer::Close(const Suppliers& suppliers) const {
    std::vector<Claim> claims = m_claims;
    for (std::size_t thread = 0; thread < claims.size(); ++thread) {
        claims[thread].end = suppliers.TakenOf(thread);
        claims[thread].until_the_end = !m_left;
    }
    return Balance(Arrivals(), claims);
}

}  // namespace qv_accounting
