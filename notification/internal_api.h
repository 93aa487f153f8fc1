#pragma once

/// Exported for the tests of this tree: what bears it is no part of the library's interface, and its header
/// is not installed.
#define QV_INTERNAL_API __attribute__((visibility("default")))
