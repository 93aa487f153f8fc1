#pragma once

namespace qv_standalone {

struct SettingsFile;

/// Adds findings on settings that are good one by one and can't work together: two processes that listen on
/// one port of this node, SSL without its configuration file. The values stay in force. Reentrant.
void AddConsistencyFindings(SettingsFile& file);

}  // namespace qv_standalone
