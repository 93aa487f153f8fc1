// What a service tells the service manager that started it (sd_notify(3)).
#pragma once

#include <string>

namespace qv_service {

/// Tells the service manager that the service answers from now on, with `status` to show for it. Without the
/// variable NOTIFY_SOCKET there is no service manager, and nothing happens. Returns a sentence for the
/// operator when it couldn't be told, otherwise nothing. Any thread may call it.
[[nodiscard]] std::string TellReady(const std::string& status);

/// Tells the service manager that the service ends. A failure has no consequence and isn't reported.
void TellStopping();

}  // namespace qv_service
