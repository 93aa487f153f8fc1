#include "logging/value_plan_cache.h"

#include <functional>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>

#include "orb/value_access.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kMaxTypes = 4096;
constexpr std::size_t kMaxTypesInAnys = 1024;
constexpr std::size_t kMaxKeptTypeCode = 16384;  // bytes

/// Plans by a key. When it is full it forgets everything, so that types that came once don't hold their
/// places for good. Any thread may use it.
template <class Key>
class PlanCache {
  public:
    explicit PlanCache(std::size_t limit) : m_limit(limit) {}

    template <class Lookup>
    PlanHandle Find(const Lookup& key) const {
        std::shared_lock<std::shared_mutex> lock(m_mutex);
        const auto found = m_plans.find(key);
        return found == m_plans.end() ? nullptr : found->second;
    }

    void Keep(Key key, const PlanHandle& plan) {
        std::lock_guard<std::shared_mutex> lock(m_mutex);
        if (m_plans.size() >= m_limit) {
            m_plans.clear();
        }
        m_plans.emplace(std::move(key), plan);
    }

  private:
    const std::size_t m_limit;
    mutable std::shared_mutex m_mutex;
    std::map<Key, PlanHandle, std::less<>> m_plans;
};

/// A TypeCode by its address. The reference keeps another TypeCode from taking that address.
class TypeKey {
  public:
    explicit TypeKey(CORBA::TypeCode_ptr type)
        : m_address(type), m_owner(CORBA::TypeCode::_duplicate(type)) {}

    friend bool operator<(const TypeKey& a, const TypeKey& b) { return Less(a.m_address, b.m_address); }
    friend bool operator<(const TypeKey& a, CORBA::TypeCode_ptr b) { return Less(a.m_address, b); }
    friend bool operator<(CORBA::TypeCode_ptr a, const TypeKey& b) { return Less(a, b.m_address); }

  private:
    static bool Less(CORBA::TypeCode_ptr a, CORBA::TypeCode_ptr b) {
        return std::less<CORBA::TypeCode_ptr>()(a, b);
    }

    CORBA::TypeCode_ptr m_address;
    CORBA::TypeCode_var m_owner;
};

// Both are never destroyed: requests may still be on their way while the process ends.

PlanCache<TypeKey>& TypeCache() {
    static auto* const cache = new PlanCache<TypeKey>(kMaxTypes);
    return *cache;
}

PlanCache<std::string>& AnyCache() {
    static auto* const cache = new PlanCache<std::string>(kMaxTypesInAnys);
    return *cache;
}

/// A handle to a plan that lives as long as the process.
PlanHandle Lasting(const ValuePlan* plan) {
    return PlanHandle(PlanHandle(), plan);
}

}  // namespace

PlanHandle PlanOf(CORBA::TypeCode_ptr type) {
    if (const ValuePlan* const simple = ValuePlan::OfSimpleKind(type->kind())) {
        return Lasting(simple);
    }
    if (PlanHandle kept = TypeCache().Find(type)) {
        return kept;
    }
    const std::string bytes = qv_orb::TypeCodeBytes(type);
    CdrReader reader(bytes.data(), bytes.size());
    PlanHandle plan = ValuePlan::Read(reader);
    TypeCache().Keep(TypeKey(type), plan);
    return plan;
}

PlanHandle PlanOfNextType(CdrReader& reader) {
    CdrReader type = reader;
    const auto kind = static_cast<CORBA::TCKind>(CdrReader(reader).ULong());
    const std::string_view bytes = SkipTypeCode(reader);
    if (const ValuePlan* const simple = ValuePlan::OfSimpleKind(kind)) {
        return Lasting(simple);
    }
    const bool worth_keeping = bytes.size() <= kMaxKeptTypeCode;
    if (worth_keeping) {
        if (PlanHandle kept = AnyCache().Find(bytes)) {
            return kept;
        }
    }
    PlanHandle plan = ValuePlan::Read(type);
    if (worth_keeping) {
        AnyCache().Keep(std::string(bytes), plan);
    }
    return plan;
}

}  // namespace NS_CORBA
