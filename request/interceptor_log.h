#pragma once

#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"

namespace NS_CORBA {

/// The source name under which all of the interceptor logs.
constexpr char kInterceptorSource[] = "agent_request_interceptor";

/// Runs `log` with the position set to `line` of the interceptor. Drops what the log raises: what a client
/// sees does not depend on the log.
template <class Log>
void LogQuietly(int line, Log&& log) noexcept {
    LogQuietly([&] {
        SetPos(kInterceptorSource, line);
        log();
    });
}

}  // namespace NS_CORBA
