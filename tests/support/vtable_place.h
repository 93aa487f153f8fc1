// The order of virtual operations, which binaries of bundles rely on.
#pragma once

#include <cstddef>
#include <cstring>

namespace qv_test {

/// At which place of its class's table of virtual functions a virtual member stands. A virtual destructor
/// takes two places, so behind one the first is 2. As the Itanium C++ ABI lays such pointers to members out,
/// which the compilers for Linux follow: the offset in the table comes first, on some processors with a mark
/// in its lowest bit.
template <class Member>
std::ptrdiff_t VtablePlace(Member member) {
    static_assert(sizeof member == 2 * sizeof(std::ptrdiff_t), "no pointer to a member");
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace qv_test
