#pragma once

#include <chrono>

namespace qv_oss {

/// Keeps SIGINT, SIGTERM and SIGHUP from ending the process, for StopRequested. To be called before the
/// process has threads.
void HoldStopSignals();

/// Waits for one of these signals; true when one came within `patience`. For one thread alone.
bool StopRequested(std::chrono::milliseconds patience);

}  // namespace qv_oss
