#pragma once

#include <atomic>

#include "gateS.h"

namespace qv_test {

/// The object behind the gate: answers, and counts what reached it.
class GateServant : public POA_GateTest::Gate {
  public:
    std::atomic<int> reached{0};

    CORBA::Long served() override { return ++reached; }
    void ping() override { ++reached; }
    char* echo(const char* text) override {
        ++reached;
        return CORBA::string_dup(text);
    }
    void fail() override {
        ++reached;
        GateTest::Refused refused;
        refused.why = CORBA::string_dup("servant");
        throw refused;
    }
    void tell(const char*) override { ++reached; }
};

}  // namespace qv_test
