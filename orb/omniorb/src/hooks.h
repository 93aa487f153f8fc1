// The hooks of the ORB in use that the seam hangs on.
#pragma once

namespace qv_orb {

/// Puts the hooks in place for the ORB that has just been made. An ORB takes them along when it is destroyed.
void InstallHooks();

/// Has `function` run when the ORB is destroyed. Once per process, before the first ORB is made.
void OnOrbDestroyed(void (*function)());

}  // namespace qv_orb
