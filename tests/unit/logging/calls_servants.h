#pragma once

#include "callsS.h"

namespace qv_test {

class TargetServant : public POA_Calls::Target {
  public:
    CORBA::Long mixed(const char*, Values::Point& place, Values::Longs_out numbers,
                      const CORBA::Any&) override {
        place.x += 1;
        place.label = CORBA::string_dup("after");
        numbers = new Values::Longs(3);
        numbers->length(3);
        for (CORBA::ULong i = 0; i < 3; ++i) {
            (*numbers)[i] = static_cast<CORBA::Long>(i);
        }
        return 77;
    }
    void given(CORBA::String_out text, CORBA::Any& detail, Values::Octets_out octets,
               CORBA::UShort) override {
        text = CORBA::string_dup("given");
        detail <<= CORBA::Double(2.5);
        octets = new Values::Octets(2);
        octets->length(2);
        (*octets)[0] = 'x';
        (*octets)[1] = m_secondOctet;
    }
    Values::Octets* blob(CORBA::Long size) override {
        auto* const octets = new Values::Octets;
        octets->length(static_cast<CORBA::ULong>(size));
        for (CORBA::ULong i = 0; i < octets->length(); ++i) {
            (*octets)[i] = static_cast<CORBA::Octet>(i % 251 + (m_secondOctet == 0 ? 0 : 1));
        }
        return octets;
    }
    Calls::Flags* large(const char* text, const Calls::Flags& flags, CORBA::String_out more,
                        CORBA::Long_out behind) override {
        more = CORBA::string_dup(text);
        behind = 4711;
        return new Calls::Flags(flags);
    }
    void nothing() override {}
    char* modifyPassword(const char*, const char*, const char*) override { return CORBA::string_dup("done"); }
    CORBA::Boolean planGateway(char*& secret, CORBA::Long_out code) override {
        CORBA::string_free(secret);
        secret = CORBA::string_dup("new secret");
        code = 12;
        return true;
    }
    Values::Maybe* maybe(CORBA::Boolean active) override {
        auto* const maybe = new Values::Maybe;
        if (active) {
            maybe->value(Values::Point());
        } else {
            maybe->_default();
        }
        return maybe;
    }
    void logOutSession(const Calls::NameValues&) override {}
    Values::Thing_ptr reference(Values::Thing_ptr thing) override { return Values::Thing::_duplicate(thing); }
    Values::Silent* silent(const Values::Silent&) override { return NewSilent(); }
    void hint(const Values::Rows&) override {}
    void plant(const Values::Tree&) override {}
    char* boxed(const char*, Values::Boxed*, CORBA::Long) override { return CORBA::string_dup("boxed"); }
    char* carried(const Values::Carrier&) override { return CORBA::string_dup("carried"); }
    Values::Choice* choice() override { return new Values::Choice(m_choice); }
    void choice(const Values::Choice& choice) override { m_choice = choice; }

    /// Made where it stays: a copied fixed forgets its limits.
    static Values::Silent* NewSilent() {
        auto* const silent = new Values::Silent;
        silent->d = 1.5;
        silent->first = 11;
        silent->c = 'x';
        silent->ll = 1;
        silent->ull = 2;
        silent->ld = 3;
        silent->ws = CORBA::wstring_dup(L"wide");
        silent->wc = L'w';
        silent->amount = CORBA::Fixed("123.45");
        silent->fee = CORBA::Fixed("123.4");
        silent->type = CORBA::TypeCode::_duplicate(Values::_tc_Tree);
        silent->last = 12;
        return silent;
    }

    CORBA::Octet m_secondOctet = 'y';
    Values::Choice m_choice;
};

class LeaverServant : public POA_Calls::Leaver {
  public:
    void logOutSession(const Calls::NameValues&, const char*) override {}
};
}  // namespace qv_test
