#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qv_notify::etcl {

/// What a component names: where it starts and the steps from there.
struct ComponentPath {
    enum class Start : std::uint8_t {
        kEvent,  ///< $
        kCurrentTime,
        kDomainName,
        kTypeName,
        kEventName,
        kName,  ///< $name, of any other name
    };

    enum class Kind : std::uint8_t {
        kMember,         ///< .name
        kPosition,       ///< .1
        kElement,        ///< [1]
        kPair,           ///< (name)
        kUnionNumber,    ///< .(1)
        kUnionText,      ///< .('text')
        kUnionDefault,   ///< .()
        kLength,         ///< ._length
        kDiscriminator,  ///< ._d
        kTypeName,       ///< ._type_id
        kRepositoryId,   ///< ._repos_id
    };

    struct Step {
        Kind kind = Kind::kMember;
        bool negative = false;     ///< of the number
        std::uint64_t number = 0;  ///< a position, an index, or the size of a discriminator's value
        std::string name;
    };

    Start start = Start::kEvent;
    std::string name;  ///< of the start, empty for $
    std::vector<Step> steps;
};

}  // namespace qv_notify::etcl
