// A channel of a service under test, with its default admins.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/support/notification/notify_client.h"
#include "tests/support/notification/notify_service_run.h"
#include "tests/support/wait_for.h"
#include "tests/unit/notify/gate.h"

namespace qv_test {

struct Channel {
    explicit Channel(const NotifyServiceRun& service, bool persistent = false)
        : Channel(MakeChannel(FactoryAt(service.Corbaloc()).in(), persistent)) {}
    explicit Channel(const CosNotifyChannelAdmin::EventChannel_var& made)
        : channel(made),
          consumers(channel->default_consumer_admin()),
          suppliers(channel->default_supplier_admin()) {}

    CosNotifyChannelAdmin::EventChannel_ptr operator->() const { return channel.in(); }

    const CosNotifyChannelAdmin::EventChannel_var channel;
    const CosNotifyChannelAdmin::ConsumerAdmin_var consumers;
    const CosNotifyChannelAdmin::SupplierAdmin_var suppliers;
};

inline void PushFromTo(RecordingSupplier& supplier, std::int32_t first, std::int32_t last,
                       const char* type = "NT_ALARM") {
    for (std::int32_t number = first; number <= last; ++number) {
        supplier.Push(EventOf(type, number));
    }
}

inline std::vector<std::int32_t> NumbersFromTo(std::int32_t first, std::int32_t last) {
    std::vector<std::int32_t> numbers;
    for (std::int32_t number = first; number <= last; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

/// False when the service does not tell it in time.
inline bool WaitForSaid(const NotifyServiceRun& service, const std::string& text) {
    return WaitFor([&] { return service.Said().find(text) != std::string::npos; });
}

inline std::size_t TimesSaid(const NotifyServiceRun& service, const std::string& text) {
    const std::string said = service.Said();
    std::size_t times = 0;
    for (std::size_t at = said.find(text); at != std::string::npos; at = said.find(text, at + 1)) {
        ++times;
    }
    return times;
}

/// Holds a consumer up until the test ends.
class Hang {
  public:
    ~Hang() { m_gate->Open(); }
    RecordingConsumer::Hook Hook() const {
        return [gate = m_gate](const CosNotification::StructuredEvent&) { gate->Wait(); };
    }
    void End() const { m_gate->Open(); }

  private:
    const std::shared_ptr<qv_notify_test::Gate> m_gate = std::make_shared<qv_notify_test::Gate>();
};

inline CosNotification::EventTypeSeq TypesOf(const std::vector<const char*>& names) {
    CosNotification::EventTypeSeq types;
    types.length(static_cast<CORBA::ULong>(names.size()));
    CORBA::ULong next = 0;
    for (const char* name : names) {
        types[next].domain_name = CORBA::string_dup("tmf_mtnm");
        types[next++].type_name = CORBA::string_dup(name);
    }
    return types;
}

}  // namespace qv_test
