#pragma once

#include <tao/corba.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "logging/cdr_reader.h"

namespace NS_CORBA {

/// A type as the value printer walks it: a TypeCode read once, so that the values of the type are printed
/// without asking the ORB about each member of each element. Aliases are resolved. Never changes once made,
/// so any thread may use it.
class ValuePlan {
  public:
    using Index = std::uint32_t;

    struct Member {
        std::string name;
        std::string lead;  ///< what is printed ahead of its value, in all kinds but unions
        Index type = 0;
    };
    struct Label {
        std::int64_t value = 0;  ///< of the discriminator
        Index member = 0;        ///< place in Type::members
    };
    struct Type {
        CORBA::TCKind kind = CORBA::tk_null;
        Index content = 0;           ///< of a sequence or array; the discriminator of a union
        std::uint32_t length = 0;    ///< of an array; digits of a fixed
        std::int32_t fallback = -1;  ///< of a union: place of the default member, or -1
        std::string id;              ///< repository id of an object reference's interface
        std::vector<Member> members;
        std::vector<Label> labels;  ///< by their values
    };

    /// Reads a TypeCode from `reader`. Raises CORBA::MARSHAL or CORBA::BAD_TYPECODE for what isn't one and
    /// CORBA::IMP_LIMIT for one that is nested too deep or too large to be a type of an interface.
    static std::shared_ptr<const ValuePlan> Read(CdrReader& reader);

    /// The plan of a kind whose TypeCode has no parameters, or none that matters to the printer; null for
    /// every other kind.
    static const ValuePlan* OfSimpleKind(CORBA::TCKind kind);

    Index root() const { return m_root; }
    const Type& at(Index index) const { return m_types[index]; }

  private:
    friend class PlanBuilder;

    std::vector<Type> m_types;
    Index m_root = 0;
};

/// The bytes of the TypeCode that comes next in `reader`, which stands behind it afterwards.
std::string_view SkipTypeCode(CdrReader& reader);

}  // namespace NS_CORBA
