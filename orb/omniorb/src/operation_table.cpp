#include "qv_orb/operation_table.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace qv_orb {
namespace {

using Operations = std::unordered_map<std::string_view, const OperationEntry*>;

struct Tables {
    std::mutex mutex;
    std::unordered_map<std::string_view, Operations> by_interface;
};

// Filled while modules are loaded, ahead of main and in any order: hence made on first use, and never
// destroyed.
Tables& tables() {
    static Tables* const instance = new Tables;
    return *instance;
}

const ParameterEntry kIsAParameters[] = {
    {"logical_type_id", CORBA::PARAM_IN, []() -> CORBA::TypeCode_ptr { return CORBA::_tc_string; }}};

// What CORBA::Object itself answers (CORBA 3.0, 15.4.2.2).
const OperationEntry kObjectOperations[] = {
    {"_is_a", []() -> CORBA::TypeCode_ptr { return CORBA::_tc_boolean; }, kIsAParameters, 1, nullptr, 0},
    {"_non_existent", []() -> CORBA::TypeCode_ptr { return CORBA::_tc_boolean; }, nullptr, 0, nullptr, 0},
    {"_interface", []() -> CORBA::TypeCode_ptr { return CORBA::_tc_Object; }, nullptr, 0, nullptr, 0},
    {"_component", []() -> CORBA::TypeCode_ptr { return CORBA::_tc_Object; }, nullptr, 0, nullptr, 0},
};

const OperationEntry* FindObjectOperation(const char* operation) {
    for (const OperationEntry& entry : kObjectOperations) {
        if (std::strcmp(entry.name, operation) == 0) {
            return &entry;
        }
    }
    return nullptr;
}

class BoundedStrings {
  public:
    using Maker = CORBA::TypeCode_ptr (*)(CORBA::ULong);
    explicit BoundedStrings(Maker make) : make_(make) {}

    CORBA::TypeCode_ptr Get(CORBA::ULong bound) {
        std::lock_guard<std::mutex> guard(mutex_);
        auto [entry, added] = made_.try_emplace(bound, nullptr);
        if (added) {
            entry->second = make_(bound);
        }
        return entry->second;
    }

  private:
    const Maker make_;
    std::mutex mutex_;
    std::map<CORBA::ULong, CORBA::TypeCode_ptr> made_;
};

}  // namespace

bool RegisterInterfaces(std::initializer_list<const InterfaceEntry*> interfaces) {
    std::lock_guard<std::mutex> guard(tables().mutex);
    for (const InterfaceEntry* interface : interfaces) {
        auto [entry, added] = tables().by_interface.try_emplace(interface->repository_id);
        if (!added) {
            continue;
        }
        for (std::size_t i = 0; i < interface->operation_count; ++i) {
            entry->second.try_emplace(interface->operations[i].name, &interface->operations[i]);
        }
    }
    return true;
}

const OperationEntry* FindOperation(const char* repository_id, const char* operation) {
    {
        std::lock_guard<std::mutex> guard(tables().mutex);
        const auto interface = tables().by_interface.find(repository_id);
        if (interface != tables().by_interface.end()) {
            const auto entry = interface->second.find(operation);
            if (entry != interface->second.end()) {
                return entry->second;
            }
        }
    }
    return operation[0] == '_' ? FindObjectOperation(operation) : nullptr;
}

CORBA::TypeCode_ptr BoundedString(CORBA::ULong bound) {
    static BoundedStrings* const made =
        new BoundedStrings([](CORBA::ULong n) { return CORBA::TypeCode::NP_string_tc(n); });
    return made->Get(bound);
}

CORBA::TypeCode_ptr BoundedWstring(CORBA::ULong bound) {
    static BoundedStrings* const made =
        new BoundedStrings([](CORBA::ULong n) { return CORBA::TypeCode::NP_wstring_tc(n); });
    return made->Get(bound);
}

}  // namespace qv_orb
