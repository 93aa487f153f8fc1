// Events, filters and destinations as the parts of a channel see them.
#pragma once

#include <gtest/gtest.h>
#include <tao/ORB.h>

#include <memory>
#include <string>
#include <vector>

#include "services/notify/channel/channel_traffic.h"
#include "tests/unit/notify/feed_fixture.h"

namespace qv_notify_test {

/// An event of domain "tmf" with a "number" to filter by.
inline CosNotification::StructuredEvent BodyOf(const char* type, std::int32_t number) {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup("tmf");
    event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
    event.header.fixed_header.event_name = CORBA::string_dup("");
    event.filterable_data.length(1);
    event.filterable_data[0].name = CORBA::string_dup("number");
    event.filterable_data[0].value <<= static_cast<CORBA::Long>(number);
    event.remainder_of_body <<= CORBA::Long{0};
    return event;
}

inline std::shared_ptr<qv_notify::FilterBody> FilterOf(const char* text, std::int32_t id = 1,
                                                       std::vector<qv_notify::EventTypeName> types = {}) {
    auto filter = std::make_shared<qv_notify::FilterBody>(id, "c1/f" + std::to_string(id), false);
    filter->Set({{1, std::move(types), qv_notify::etcl::Constraint::Parse(text)}});
    return filter;
}

/// Keeps the numbers of what it is sent.
class NumberPort : public qv_notify::ConsumerPort {
  public:
    qv_notify::CallOutcome Push(const CosNotification::StructuredEvent& event) override {
        CORBA::Long number = -1;
        event.filterable_data[0].value >>= number;
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_numbers.push_back(number);
        return {};
    }
    qv_notify::CallOutcome OfferChange(const CosNotification::EventTypeSeq&,
                                       const CosNotification::EventTypeSeq&) override {
        return {};
    }
    std::string Peer() const override { return "peer"; }
    std::vector<int> Numbers() const {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_numbers;
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<int> m_numbers;
};

class ChannelTest : public FeedTest {
  protected:
    ChannelTest() {
        int argc = 0;
        char* argv[] = {nullptr};
        m_orb = CORBA::ORB_init(argc, argv);
    }
    qv_notify::Destination DestinationOf(const std::shared_ptr<qv_notify::Feed>& feed,
                                         const std::string& path = "c1/ca0/p1",
                                         qv_notify::FilterList filters = {}) {
        return {path, feed, qv_notify::TypeSet::All(), std::move(filters)};
    }

  private:
    CORBA::ORB_var m_orb;
};

}  // namespace qv_notify_test
