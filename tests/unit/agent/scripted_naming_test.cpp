// The naming operations call by call, against a naming service that does as it is told.
#include <functional>
#include <map>

#include "tests/unit/agent/naming_fixture.h"

namespace qv_test {
namespace {

/// A naming service in this process that notes what it is asked and raises what it is told to.
class ScriptedContext : public virtual POA_CosNaming::NamingContext {
  public:
    std::vector<std::string> calls;
    std::map<std::string, std::function<void()>> raise;  // by operation

    void bind(const CosNaming::Name& name, CORBA::Object_ptr) override { Note("bind", name); }
    void rebind(const CosNaming::Name& name, CORBA::Object_ptr) override { Note("rebind", name); }
    void bind_context(const CosNaming::Name& name, CosNaming::NamingContext_ptr) override { Note("?", name); }
    void rebind_context(const CosNaming::Name& name, CosNaming::NamingContext_ptr) override {
        Note("?", name);
    }
    CORBA::Object_ptr resolve(const CosNaming::Name& name) override {
        Note("resolve", name);
        return CORBA::Object::_nil();
    }
    void unbind(const CosNaming::Name& name) override { Note("unbind", name); }
    CosNaming::NamingContext_ptr new_context() override { return CosNaming::NamingContext::_nil(); }
    CosNaming::NamingContext_ptr bind_new_context(const CosNaming::Name& name) override {
        Note("bind_new_context", name);
        return _this();
    }
    void destroy() override {}
    void list(CORBA::ULong, CosNaming::BindingList_out, CosNaming::BindingIterator_out) override {
        throw CORBA::NO_IMPLEMENT();
    }

  private:
    void Note(const std::string& operation, const CosNaming::Name& name) {
        std::string text = operation;
        for (CORBA::ULong i = 0; i < name.length(); ++i) {
            text += std::string(i == 0 ? " " : "/") + name[i].id.in() + "." + name[i].kind.in();
        }
        calls.push_back(text);
        if (raise[operation]) {
            raise[operation]();
        }
    }
};

class ScriptedNaming : public Naming {
  protected:
    ScriptedNaming() : m_owner(m_context) {
        CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
        PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
        PortableServer::POAManager_var(root->the_POAManager())->activate();
        CosNaming::NamingContext_var reference = m_context->_this();
        UseOption("-ns" +
                  m_dir.Write("ns.ior", CORBA::String_var(m_orb->object_to_string(reference.in())).in()));
    }

    using Calls = std::vector<std::string>;

    ScriptedContext* m_context = new ScriptedContext;
    PortableServer::ServantBase_var m_owner;
};

TEST_F(ScriptedNaming, NameOfOneComponentTakesOneCall) {
    EXPECT_TRUE(config().RegistName(MakeName({{"a", "k"}}), Reference("x").in()));
    EXPECT_EQ(Calls{"bind a.k"}, m_context->calls);
}

TEST_F(ScriptedNaming, ContextsAreMadeFromTheRootDown) {
    EXPECT_TRUE(config().RegistName(MakeName({{"a", "1"}, {"b", "2"}, {"c", "3"}}), Reference("x").in()));
    EXPECT_EQ((Calls{"bind_new_context a.1", "bind_new_context a.1/b.2", "bind a.1/b.2/c.3"}),
              m_context->calls);
}

TEST_F(ScriptedNaming, ExistingContextsAndBindingAreNoFailure) {
    m_context->raise["bind_new_context"] = [] { throw CosNaming::NamingContext::AlreadyBound(); };
    m_context->raise["bind"] = [] { throw CosNaming::NamingContext::AlreadyBound(); };
    EXPECT_TRUE(config().RegistName(MakeName({{"a", ""}, {"b", ""}, {"c", ""}}), Reference("x").in()));
    EXPECT_EQ((Calls{"bind_new_context a.", "bind_new_context a./b.", "bind a./b./c.", "rebind a./b./c."}),
              m_context->calls);
    EXPECT_TRUE(m_log->Entries(kSys).empty());
}

TEST_F(ScriptedNaming, ContextThatCannotBeMadeEndsTheRegistration) {
    m_context->raise["bind_new_context"] = [] { throw CosNaming::NamingContext::InvalidName(); };
    EXPECT_FALSE(config().RegistName(MakeName({{"a", ""}, {"b", ""}, {"c", ""}}), Reference("x").in()));
    EXPECT_EQ(Calls{"bind_new_context a."}, m_context->calls);
    ExpectLogPrefix(kSys, -1, "naming",
                    "[CorbaBaseAgentConfig::RegistName] Unknown exception received during bind_new_context!"
                    "user exception, ID 'IDL:omg.org/CosNaming/NamingContext/InvalidName:1.0'",
                    "during bind_new_context!");
}

TEST_F(ScriptedNaming, NameThatCannotBeBoundEndsTheRegistration) {
    m_context->raise["bind"] = [] { throw CORBA::NO_PERMISSION(); };
    EXPECT_FALSE(config().RegistName(MakeName({{"a", ""}}), Reference("x").in()));
    EXPECT_EQ(Calls{"bind a."}, m_context->calls);
    ExpectLogPrefix(kSys, -1, "naming",
                    "[CorbaBaseAgentConfig::RegistName] Unknown exception received during bind name!"
                    "system exception, ID 'IDL:omg.org/CORBA/NO_PERMISSION:1.0'",
                    "during bind name!");
}

TEST_F(ScriptedNaming, RebindIsTriedOnce) {
    m_context->raise["bind"] = [] { throw CosNaming::NamingContext::AlreadyBound(); };
    m_context->raise["rebind"] = [] { throw CORBA::NO_RESOURCES(); };
    EXPECT_FALSE(config().RegistName(MakeName({{"a", ""}}), Reference("x").in()));
    EXPECT_EQ((Calls{"bind a.", "rebind a."}), m_context->calls);
    ExpectLogPrefix(kSys, -1, "naming",
                    "[CorbaBaseAgentConfig::RegistName] Unknown exception received during rebind name!"
                    "system exception, ID 'IDL:omg.org/CORBA/NO_RESOURCES:1.0'",
                    "during rebind name!");
}

TEST_F(ScriptedNaming, FiveComponentsAreUnboundFiveTimes) {
    EXPECT_TRUE(config().UnRegistEMSFactoryName());
    EXPECT_EQ((Calls{"unbind TMF_MTNM.Class/ZORVEX.Vendor/Zorvex/KLV.EmsInstance/2.0.Version/"
                     "Zorvex/KLV.EmsSessionFactory_I",
                     "unbind TMF_MTNM.Class/ZORVEX.Vendor/Zorvex/KLV.EmsInstance/2.0.Version",
                     "unbind TMF_MTNM.Class/ZORVEX.Vendor/Zorvex/KLV.EmsInstance",
                     "unbind TMF_MTNM.Class/ZORVEX.Vendor", "unbind TMF_MTNM.Class"}),
              m_context->calls);
}

TEST_F(ScriptedNaming, UnbindingEndsAtTheFirstFailure) {
    m_context->raise["unbind"] = [] { throw CosNaming::NamingContext::NotFound(); };
    EXPECT_FALSE(config().UnRegistName(MakeName({{"a", ""}, {"b", ""}})));
    EXPECT_EQ(Calls{"unbind a./b."}, m_context->calls);
}

TEST_F(ScriptedNaming, EachFailureToResolveHasItsText) {
    const std::map<std::string, std::function<void()>> failures{
        {"Exception CosNaming::NamingContext::NotFound received!\n",
         [] { throw CosNaming::NamingContext::NotFound(); }},
        {"Exception CosNaming::NamingContext::CannotProceed received!\n",
         [] { throw CosNaming::NamingContext::CannotProceed(); }},
        {"Exception CosNaming::NamingContext::InvalidName received!\n",
         [] { throw CosNaming::NamingContext::InvalidName(); }},
        {"Unknown exception received during resolve name!\n", [] { throw CORBA::NO_RESOURCES(); }}};
    for (const auto& [text, raise] : failures) {
        m_context->raise["resolve"] = raise;
        m_log->Clear();
        CORBA::Object_var found;
        EXPECT_FALSE(config().GetRef(MakeName({{"a", ""}}), found));
        ExpectLog(kSys, -1, "naming", text);
        EXPECT_EQ(1u, m_log->Entries(kSys).size());
    }
}

TEST_F(ScriptedNaming, NilResultIsAFailureWithoutAMessage) {
    CORBA::Object_var found = Reference("before");
    EXPECT_FALSE(config().GetRef(MakeName({{"a", ""}}), found));
    EXPECT_TRUE(CORBA::is_nil(found.in()));
    EXPECT_TRUE(m_log->Entries(kSys).empty());
}

}  // namespace
}  // namespace qv_test
