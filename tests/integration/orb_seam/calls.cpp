#include "calls.h"

#include <cstdio>
#include <functional>
#include <map>

namespace qv_test {
namespace {

using Call = std::function<std::string(Seam::Target_ptr, const std::string&)>;

CORBA::ULong Number(const std::string& text) {
    return static_cast<CORBA::ULong>(std::stoul(text));
}

std::string Mix(Seam::Target_ptr target, const std::string& argument) {
    Seam::Item first;
    first.name = argument.c_str();
    first.count = 7;
    Seam::ItemList items(2);
    items.length(2);
    items[0].name = "x";
    items[0].count = 1;
    items[1].name = "y";
    items[1].count = 2;
    Seam::Colour colour = Seam::RED;
    const CORBA::Long sum = target->mix(first, items, colour);
    std::string names;
    for (CORBA::ULong i = 0; i < items.length(); ++i) {
        names.append(items[i].name).append("=").append(std::to_string(items[i].count)).append(" ");
    }
    return std::to_string(sum) + " " + names + std::to_string(colour);
}

std::string Choose(Seam::Target_ptr target, const std::string& argument) {
    Seam::Choice which;
    which.text(argument.c_str());
    CORBA::Any value;
    value <<= CORBA::Long{41};
    CORBA::Any_var copy;
    const Seam::Choice_var chosen = target->choose(which, value, copy.out());
    CORBA::Long number = 0;
    copy.in() >>= number;
    return std::to_string(chosen->number()) + " " + std::to_string(number);
}

std::string Self(Seam::Target_ptr target, const std::string&) {
    CORBA::Object_var other = CORBA::Object::_nil();
    const Seam::Target_var same = target->self(target, other.inout());
    return std::string(same->_is_equivalent(target) ? "same" : "other") +
           (CORBA::is_nil(other.in()) ? " nil" : " set");
}

std::string Wide(Seam::Target_ptr target, const std::string&) {
    const CORBA::WString_var answer = target->wide(L"\u00e4\u4e2d");
    return std::wstring(answer.in()) == L"\u00e4\u4e2d" ? "equal" : "different";
}

std::string Items(Seam::Target_ptr target, const std::string& argument) {
    Seam::ItemList_var items = target->items(Number(argument));
    const CORBA::ULong count = items->length();
    return std::to_string(count) + (count == 0 ? "" : " " + std::string(items[count - 1].name));
}

const std::map<std::string, Call>& Calls() {
    static const std::map<std::string, Call> calls = {
        {"echo",
         [](auto target, auto& text) { return std::string(CORBA::String_var(target->echo(text.c_str()))); }},
        {"title", [](auto target, auto&) { return std::string(CORBA::String_var(target->title())); }},
        {"get_level", [](auto target, auto&) { return std::to_string(target->level()); }},
        {"set_level",
         [](auto target, auto& value) {
             target->level(static_cast<CORBA::Long>(Number(value)));
             return std::string("done");
         }},
        {"inherited",
         [](auto target, auto& text) {
             return std::string(CORBA::String_var(target->inherited(text.c_str())));
         }},
        {"mix", Mix},
        {"choose", Choose},
        {"self", Self},
        {"shorten", [](auto target,
                       auto& text) { return std::string(CORBA::String_var(target->shorten(text.c_str()))); }},
        {"wide", Wide},
        {"fail",
         [](auto target, auto& kind) {
             target->fail(kind.c_str());
             return std::string("done");
         }},
        {"tell",
         [](auto target, auto& text) {
             target->tell(text.c_str());
             return std::string("done");
         }},
        {"null_result",
         [](auto target, auto&) { return std::string(CORBA::String_var(target->null_result())); }},
        {"null_out",
         [](auto target, auto&) {
             Seam::Item_var item;
             target->null_out(item.out());
             return std::string("done");
         }},
        {"null_exception",
         [](auto target, auto&) {
             target->null_exception();
             return std::string("done");
         }},
        {"blob",
         [](auto target, auto& count) {
             const Seam::Octets_var octets = target->blob(Number(count));
             return std::to_string(octets->length());
         }},
        {"items", Items},
        {"nest",
         [](auto target, auto& depth) {
             return std::to_string(target->nest(target, static_cast<CORBA::Long>(Number(depth))));
         }},
        {"_is_a",
         [](auto target, auto& id) { return std::string(target->_is_a(id.c_str()) ? "yes" : "no"); }},
        {"_non_existent",
         [](auto target, auto&) { return std::string(target->_non_existent() ? "gone" : "there"); }},
    };
    return calls;
}

const char* Completion(CORBA::CompletionStatus status) {
    switch (status) {
        case CORBA::COMPLETED_YES:
            return "YES";
        case CORBA::COMPLETED_NO:
            return "NO";
        default:
            return "MAYBE";
    }
}

}  // namespace

std::string Describe(const CORBA::SystemException& ex) {
    char minor[16];
    std::snprintf(minor, sizeof minor, "0x%08x", static_cast<unsigned>(ex.minor()));
    return std::string(ex._name()) + " " + minor + " " + Completion(ex.completed());
}

std::string CallByName(Seam::Target_ptr target, const std::string& operation, const std::string& argument) {
    try {
        return Calls().at(operation)(target, argument);
    } catch (const Seam::Refused& refused) {
        return std::string("Refused ") + refused.reason.in() + " " + std::to_string(refused.code);
    } catch (const CORBA::SystemException& ex) {
        return Describe(ex);
    } catch (const CORBA::UserException& ex) {
        return std::string("unexpected ") + ex._rep_id();
    }
}

}  // namespace qv_test
