// Functions of the ORB that the seam puts its own in place of, since no hook of the ORB stands there.
#pragma once

#include <string>

namespace qv_orb {

/// True when the process really runs the seam's functions. They come into force through the order in which
/// the dynamic linker looks at libraries, so a program that links the ORB ahead of the seam would lose them
/// silently: `what` then says which one and what to do.
bool InterpositionInForce(std::string& what);

}  // namespace qv_orb
