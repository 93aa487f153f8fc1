#pragma once

#include <tao/corba.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "orb/cdr_reader.h"

namespace qv_notify::etcl {

using qv_orb::CdrReader;

/// A TypeCode read once, so that a value's parts are found without asking the ORB for a TypeCode per part.
/// Never changes once made, so any thread may use it.
class TypeTable {
  public:
    using Index = std::uint32_t;

    struct Member {
        std::string name;
        Index type = 0;
        std::int64_t label = 0;   ///< of a union: the discriminator's value
        bool by_default = false;  ///< of a union: the default member, whose label means nothing
    };
    struct Type {
        CORBA::TCKind kind = CORBA::tk_null;
        Index content = 0;         ///< of a sequence, array or alias; the discriminator of a union
        std::uint32_t length = 0;  ///< of an array; digits of a fixed
        std::int16_t scale = 0;    ///< of a fixed
        std::string id;            ///< repository id, empty for types without one
        std::string name;
        std::vector<Member> members;  ///< enumerators have only the name
    };

    /// Reads the TypeCode at the reader's place. Raises CORBA::MARSHAL or CORBA::BAD_TYPECODE for what isn't
    /// one and CORBA::IMP_LIMIT for one that is nested too deep or too large.
    static std::shared_ptr<const TypeTable> Read(CdrReader& reader);

    Index root() const { return m_root; }
    const Type& at(Index index) const { return m_types[index]; }
    /// The type behind all aliases.
    Index Unaliased(Index index) const;

  private:
    friend class TypeTableBuilder;

    std::vector<Type> m_types;
    Index m_root = 0;
};

using TypeTablePtr = std::shared_ptr<const TypeTable>;

/// Whether a union can have a discriminator of that kind.
bool IsDiscriminator(CORBA::TCKind kind);

/// The value of a discriminator of that kind; false for a kind that can't be one.
bool ReadDiscriminator(CdrReader& reader, CORBA::TCKind kind, std::int64_t& value);

/// The bytes of the TypeCode that comes next in `reader`, which stands behind it afterwards.
std::string_view SkipTypeCode(CdrReader& reader);

/// The kind of the TypeCode that comes next.
inline CORBA::TCKind NextKind(CdrReader reader) {
    return static_cast<CORBA::TCKind>(reader.ULong());
}

/// Whether values of the kind are read without a table: there is nothing in the TypeCode that matters.
bool IsSimple(CORBA::TCKind kind);

}  // namespace qv_notify::etcl
