// A consumer that keeps an account, and can hang.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tests/e2e/notify_accounting/account.h"
#include "tests/e2e/notify_accounting/suppliers.h"
#include "tests/support/notification/notify_client.h"

namespace qv_accounting {

/// Remembers events as they arrive, before it maybe hangs in the call. One thread uses it.
class Consumer {
  public:
    Consumer(std::string name, CosNotifyChannelAdmin::ConsumerAdmin_ptr admin, const Suppliers& suppliers);
    /// Lets go what hangs.
    ~Consumer();
    Consumer(const Consumer&) = delete;
    Consumer& operator=(const Consumer&) = delete;

    const std::string& Name() const { return m_name; }
    int Proxy() const { return m_servant->Id(); }
    qv_test::RecordingConsumer& Servant() { return *m_servant.in(); }
    std::vector<std::int32_t> Arrivals() const;
    bool HasAny() const;
    /// Whether it has an event of each supplier thread.
    bool HasOneOfEach() const;
    bool Left() const { return m_left; }

    /// Its calls don't return from now on, until LetGo.
    void Hang();
    void LetGo();
    /// Ends its proxy, and itself.
    void Leave();

    /// Whether it has the last of the events that have been taken so far, of each thread.
    bool HasTheLast(const Suppliers& suppliers) const;
    /// To be called when no event is under way any more.
    Account Close(const Suppliers& suppliers) const;

  private:
    struct Book {
        mutable std::mutex mutex;
        std::condition_variable changed;
        std::vector<std::int32_t> arrivals;
        std::vector<std::int32_t> last;  // by thread
        bool hangs = false;
        void Enter(std::int32_t number);
    };

    const std::string m_name;
    const std::shared_ptr<Book> m_book = std::make_shared<Book>();
    const PortableServer::Servant_var<qv_test::RecordingConsumer> m_servant;
    std::vector<Claim> m_claims;
    bool m_left = false;
};

}  // namespace qv_accounting
