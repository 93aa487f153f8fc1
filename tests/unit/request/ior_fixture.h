#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "agent/corbabaseagentconfig.h"
#include "logging/logmgr.h"
#include "request/ior_parser.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/config_items.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/request/ior_text.h"

namespace qv_test {

/// An ORB whose objects all have the reference that the test gives; without one it raises NO_RESOURCES.
class ReferenceOrb : public FakeOrb {
  public:
    std::optional<std::string> reference;
    bool null = false;            ///< gives a null pointer
    std::function<void()> raise;  ///< runs first

    char* object_to_string(CORBA::Object_ptr) override {
        if (raise) {
            raise();
        }
        if (null) {
            return nullptr;
        }
        if (!reference) {
            throw CORBA::NO_RESOURCES(9, CORBA::COMPLETED_NO);
        }
        return CORBA::string_dup(reference->c_str());
    }
};

/// The answers of a parser about references that the test writes.
class IorTest : public ::testing::Test {
  protected:
    IorTest() {
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        NS_CORBA::CorbaLogMgr::Destroy();
        NS_CORBA::CorbaLogMgr::Instance()->Init();
        WithPort(true);
        config().SetOrb(m_orb);
        m_log->Clear();
    }
    ~IorTest() override {
        config().SetOrb(CORBA::ORB::_nil());
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        NS_CORBA::CorbaLogMgr::Destroy();
        CORBA::release(m_orb);
    }

    static NS_CORBA::CorbaBaseAgentConfig& config() { return *NS_CORBA::CorbaBaseAgentConfig::Instance(); }

    void WithPort(bool on) {
        m_items.Set("bUseIPAndPort", on ? "1" : "0");
        config().GetOption();
    }

    /// What GetHostInfo answers about `reference`; "invalid" when it refuses.
    std::string Info(const std::string& reference) {
        m_orb->reference = reference;
        std::string info = "untouched";
        const bool valid = m_parser.GetHostInfo(CORBA::Object::_nil(), info);
        EXPECT_TRUE(valid || info == "untouched") << info;
        return valid ? info : "invalid";
    }

    /// The same for bytes behind "IOR:".
    std::string InfoOfBytes(const std::string& bytes) { return Info("IOR:" + Hex(bytes)); }

    std::string LastHostAndPort() {
        std::string text;
        m_parser.GetIPAndPortInfo(text);
        return text;
    }

    ScopedLogCapture m_log;
    ScopedConfigItems m_items;
    ReferenceOrb* m_orb = new ReferenceOrb;
    NS_CORBA::IOR_Parser m_parser;
};

}  // namespace qv_test
