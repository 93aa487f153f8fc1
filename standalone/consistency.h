#pragma once

namespace qv_standalone {

struct SettingsFile;

/// Adds findings on settings that are good one by one and can't work together: two processes that listen on
/// one port of this node, SSL without its configuration file or port, services that the agent is to start and
/// whose programs aren't there. The values stay in force. Reentrant; looks at the environment and at the
/// disk.
void AddConsistencyFindings(SettingsFile& file);

}  // namespace qv_standalone
