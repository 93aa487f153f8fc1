#pragma once

#include <cstddef>
#include <string>

namespace qv_standalone {

/// Fills `size` bytes, 256 at most, with the system's random numbers. Throws std::exception when there are
/// none. Any thread may call it.
void FillRandom(void* bytes, std::size_t size);

/// Appends two lower-case hexadecimal digits for each byte. Reentrant.
void AppendHex(std::string& text, const unsigned char* bytes, std::size_t size);

}  // namespace qv_standalone
