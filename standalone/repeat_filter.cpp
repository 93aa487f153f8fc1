#include "standalone/repeat_filter.h"

#include <utility>

namespace qv_standalone {

void RepeatFilter::Start(std::string_view record) {
    m_last = record;
    m_run = 1;
    m_held = 0;
}

bool RepeatFilter::Admit() {
    if (m_run < kWritten) {
        ++m_run;
        return true;
    }
    ++m_held;
    return false;
}

std::uint64_t RepeatFilter::TakeHeldBack() {
    return std::exchange(m_held, 0);
}

}  // namespace qv_standalone
