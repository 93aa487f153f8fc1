#pragma once

namespace qv_standalone {

/// How often this process came out of a fork since its memory began, counted from the first call on. Cheap.
/// Any thread may call it. What a thread or a random number left behind in a forked child is told by a
/// change.
unsigned ForkCount();

}  // namespace qv_standalone
