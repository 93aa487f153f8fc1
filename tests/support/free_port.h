#pragma once

namespace qv_test {

/// A TCP port of 127.0.0.1 that nobody listens on right now, chosen by the system. Each call gives another
/// one.
int FreePort();

}  // namespace qv_test
