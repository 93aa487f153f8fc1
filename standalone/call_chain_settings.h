#pragma once

#include "standalone/span_recorder.h"

namespace qv_standalone {

struct CallChainSettings {
    bool on = false;
    SpanRecorderOptions recorder;
};

/// What the configuration file of this process says about the call chain. What is wrong in the file is not
/// reported here; the configuration store does that.
CallChainSettings ReadCallChainSettings();

}  // namespace qv_standalone
