// The input is the stored description of an object. What is read is written and read again.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "services/notify/store/description.h"

namespace {

using qv_notify::StoreError;
using qv_notify::Text;

template <class Read>
void ReadTwice(Read read, const std::string& text) {
    try {
        const auto state = read(text);
        if (!(read(Text(state)) == state)) {
            std::abort();
        }
    } catch (const StoreError& error) {
        if (std::string(error.what()).empty()) {
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    ReadTwice(qv_notify::ReadChannel, text);
    ReadTwice(qv_notify::ReadAdmin, text);
    ReadTwice(qv_notify::ReadProxy, text);
    ReadTwice(qv_notify::ReadFilter, text);
    return 0;
}
