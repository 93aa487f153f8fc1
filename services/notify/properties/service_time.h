#pragma once

#include <chrono>

namespace qv_notify {

/// When something happens, by the clock of the wall: events are kept across restarts, and the times that
/// suppliers give are absolute.
using Time = std::chrono::system_clock::time_point;

}  // namespace qv_notify
