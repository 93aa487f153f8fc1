#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/e2e/harness/deployment.h"

namespace qv_e2e {

/// An event as the agent's ledger has it.
struct RaisedEvent {
    unsigned number = 0;
    std::string id;
    std::string type;
    std::string severity;
    std::string element;
    bool held = false;  ///< buffered or dropped
};

/// Naming service, notification service, an agent that sends events, and OSSs that listen to them.
class EventRun : public Deployment {
  public:
    /// Nothing runs yet. The agent keeps as many events as it must.
    explicit EventRun(bool persistent_channel);

    /// Starts both services and the agent.
    void StartAll();

    using Oss = std::unique_ptr<qv_test::ChildProcess>;
    /// Starts an OSS that shows events, and waits until it listens.
    Oss Listen(const std::vector<std::string>& arguments) const;
    /// Lets the agent raise events; doesn't wait for them.
    void Raise(unsigned count, unsigned per_second) const;
    /// Waits until the agent has raised what it was told to.
    bool WaitUntilRaised(unsigned count) { return agent().WaitForOut("raised " + std::to_string(count)); }

    using Selection = std::function<bool(const RaisedEvent&)>;
    /// The ledger's events that are selected, in their order.
    std::vector<RaisedEvent> Raised(const Selection& selection) const;
    std::vector<std::string> RaisedIds(const Selection& selection) const;
    /// The ids of the events that could not be pushed, as the agent was told.
    std::set<std::string> FailedIds() const;
};

/// The ids of the events that the OSS has shown, in their order.
std::vector<std::string> ShownIds(const qv_test::ChildProcess& oss);

/// The same without those that came before; `again` receives the others.
std::vector<std::string> FirstOnes(const std::vector<std::string>& ids, std::set<std::string>& again);

bool IsUrgent(const RaisedEvent& event);
bool IsNoHeartbeat(const RaisedEvent& event);

constexpr const char* kUrgentFilter = "$perceivedSeverity == PS_CRITICAL or $perceivedSeverity == PS_MAJOR";
constexpr const char* kAllButHeartbeats = "NT_ALARM,NT_ATTRIBUTE_VALUE_CHANGE";

}  // namespace qv_e2e
