#include "tests/e2e/events/event_run.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qv_e2e {
namespace {

std::vector<std::string> Split(const std::string& line, char separator) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, separator);) {
        if (separator != ' ' || !field.empty()) {
            fields.push_back(field);
        }
    }
    return fields;
}

/// Complete lines alone: the last one may still be written.
std::vector<std::string> Lines(const std::string& text) {
    return Split(text.substr(0, text.rfind('\n') + 1), '\n');
}

}  // namespace

EventRun::EventRun(bool persistent_channel) {
    SendEvents(persistent_channel);
    Set("EventQueueLength", "100000");
    // A library's worth of seconds less at the end of each test.
    Set("ORBThreadPoolEnable", "false");
}

void EventRun::StartAll() {
    StartNaming();
    StartNotify();
    StartAgent();
}

EventRun::Oss EventRun::Listen(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"events"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Oss oss = StartOss(command);
    EXPECT_TRUE(oss->WaitForOut("-- listening\n")) << oss->Out() << oss->Err();
    return oss;
}

void EventRun::Raise(unsigned count, unsigned per_second) const {
    const auto raise =
        Deployment::Oss({"raise", std::to_string(count), "--per-second", std::to_string(per_second)});
    ASSERT_EQ(raise.code, 0) << raise.err;
}

std::vector<RaisedEvent> EventRun::Raised(const Selection& selection) const {
    std::vector<RaisedEvent> events;
    for (const std::string& line : Lines(Log("events.csv"))) {
        const std::vector<std::string> fields = Split(line, ',');
        if (fields.size() == 7 && fields[0] == "event") {
            const RaisedEvent event{static_cast<unsigned>(std::stoul(fields[1])),
                                    fields[2],
                                    fields[3],
                                    fields[4],
                                    fields[5],
                                    fields[6] == "held"};
            if (selection(event)) {
                events.push_back(event);
            }
        }
    }
    return events;
}

std::vector<std::string> EventRun::RaisedIds(const Selection& selection) const {
    std::vector<std::string> ids;
    for (const RaisedEvent& event : Raised(selection)) {
        ids.push_back(event.id);
    }
    return ids;
}

std::set<std::string> EventRun::FailedIds() const {
    std::set<std::string> ids;
    for (const std::string& line : Lines(Log("events.csv"))) {
        const std::vector<std::string> fields = Split(line, ',');
        if (fields.size() == 3 && fields[0] == "loss") {
            ids.insert(fields[2]);
        }
    }
    return ids;
}

std::vector<std::string> ShownIds(const qv_test::ChildProcess& oss) {
    std::vector<std::string> ids;
    for (const std::string& line : Lines(oss.Out())) {
        const std::vector<std::string> words = Split(line, ' ');
        if (words.size() > 2 && words[0] != "--") {
            ids.push_back(words[2]);
        }
    }
    return ids;
}

std::vector<std::string> FirstOnes(const std::vector<std::string>& ids, std::set<std::string>& again) {
    std::vector<std::string> first;
    std::set<std::string> seen;
    for (const std::string& id : ids) {
        if (seen.insert(id).second) {
            first.push_back(id);
        } else {
            again.insert(id);
        }
    }
    return first;
}

bool IsUrgent(const RaisedEvent& event) {
    return event.severity == "PS_CRITICAL" || event.severity == "PS_MAJOR";
}

bool IsNoHeartbeat(const RaisedEvent& event) {
    return event.type != "NT_HEARTBEAT";
}

}  // namespace qv_e2e
