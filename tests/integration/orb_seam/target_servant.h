// The servant of the tests.
#pragma once

#include <functional>
#include <string>

#include "seamS.h"
#include "tests/support/take_turns.h"

namespace qv_test {

/// Answers each operation in its plain way, after `on_call` with the operation's name, where that is set.
/// Several threads may be inside.
class TargetServant : public virtual POA_Seam::Target {
  public:
    explicit TargetServant(std::string title = "target") : m_title(std::move(title)) {}

    std::function<void(const std::string& operation)> on_call;

    char* title() override;
    CORBA::Long level() override;
    void level(CORBA::Long value) override;
    char* inherited(const char* text) override;
    char* echo(const char* text) override;
    CORBA::Long mix(const Seam::Item& first, Seam::ItemList& items, Seam::Colour_out colour) override;
    Seam::Choice* choose(const Seam::Choice& which, const CORBA::Any& value, CORBA::Any_out copy) override;
    Seam::Target_ptr self(Seam::Target_ptr peer, CORBA::Object_ptr& other) override;
    char* shorten(const char* text) override;
    CORBA::WChar* wide(const CORBA::WChar* text) override;
    void fail(const char* kind) override;
    void tell(const char* text) override;
    char* null_result() override;
    void null_out(Seam::Item_out value) override;
    void null_exception() override;
    Seam::Octets* blob(CORBA::ULong count) override;
    Seam::ItemList* items(CORBA::ULong count) override;
    CORBA::Long nest(Seam::Target_ptr peer, CORBA::Long depth) override;

  private:
    void Called(const char* operation);

    const std::string m_title;
    CORBA::Long m_level = 3;
};

}  // namespace qv_test
