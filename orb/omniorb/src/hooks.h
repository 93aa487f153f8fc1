// The hooks of the ORB in use that the seam hangs on.
#pragma once

namespace qv_orb {

/// Puts the hooks in place; once per process, while an ORB exists. Repeating it does nothing.
void InstallHooks();

/// Has `function` run when the ORB is destroyed. Once per process, before the first ORB is made.
void OnOrbDestroyed(void (*function)());

}  // namespace qv_orb
