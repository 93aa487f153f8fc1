#pragma once

#include <string>

#include "callsC.h"
#include "tests/unit/logging/calls_servants.h"
#include "tests/unit/logging/comparing_interceptor.h"
#include "tests/unit/logging/record_fixture.h"

namespace qv_test {

/// A test of the records of real calls. The way without Anys has to give what the way through the Anys gives,
/// which other tests compare with texts made by hand.
class MarshalledFixture : public RecordFixture {
  protected:
    MarshalledFixture() {
        PortableServer::POA_ptr poa = TestRootPoa();
        m_id = poa->activate_object(&servant);
        m_leaverId = poa->activate_object(&m_leaver);
        PortableServer::POAManager_var manager = poa->the_POAManager();
        manager->activate();
        target = Calls::Target::_narrow(CORBA::Object_var(poa->id_to_reference(m_id.in())));
        leaver = Calls::Leaver::_narrow(CORBA::Object_var(poa->id_to_reference(m_leaverId.in())));
        NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(TestOrb());
        Last() = Comparison();
    }
    ~MarshalledFixture() override {
        TestRootPoa()->deactivate_object(m_id.in());
        TestRootPoa()->deactivate_object(m_leaverId.in());
    }

    /// Both ways gave the same for request and reply; `request` and `reply` are parts of it.
    void ExpectSame(const std::string& request, const std::string& reply) {
        for (const int type : {0, 1}) {
            const Recorded& direct = Last().direct[type];
            const Recorded& anys = Last().throughAnys[type];
            EXPECT_EQ(direct.text, anys.text) << type;
            EXPECT_EQ(direct.result, anys.result) << type;
        }
        EXPECT_EQ(Last().direct[0].text, request);
        EXPECT_EQ(Last().direct[1].text, reply);
    }

    TargetServant servant;
    Calls::Target_var target;
    Calls::Leaver_var leaver;

  private:
    LeaverServant m_leaver;
    PortableServer::ObjectId_var m_id;
    PortableServer::ObjectId_var m_leaverId;
};
/// What a call of `mixed` needs.
struct Mixed {
    Values::Point place;
    Values::Longs_var numbers;
    CORBA::Any detail;

    Mixed() {
        place.x = 1;
        place.label = CORBA::string_dup("before");
        detail <<= static_cast<CORBA::Long>(5);
    }
    void Call(Calls::Target_ptr target) { target->mixed("a", place, numbers.out(), detail); }
    /// With `value` as it comes from a peer, marshalled.
    void Call(Calls::Target_ptr target, const CORBA::Any& value) {
        detail = value;
        Call(target);
    }
    static std::string Request(const std::string& detail) {
        return "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 1 label before}\n"
               "--- Parameter No.3 = " +
               detail + "\n } ";
    }
    static std::string Reply(const std::string& detail) {
        return "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 2 label after}\n"
               "--- Parameter No.3 = " +
               detail + "\n } mixed @return: 77\n";
    }
};
}  // namespace qv_test
