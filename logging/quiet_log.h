#pragma once

namespace NS_CORBA {

/// Runs `log`, which sets its position and writes, and drops whatever it raises. For lines whose failure must
/// not become the caller's: those of a catch clause, of a thread's own function, of a served request. May be
/// called from any thread.
template <class Log>
void LogQuietly(Log&& log) noexcept {
    try {
        log();
    } catch (...) {
        return;
    }
}

}  // namespace NS_CORBA
