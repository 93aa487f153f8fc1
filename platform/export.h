#pragma once

/// Marks what a shared library of this project offers to others. The libraries are built with hidden
/// visibility, so whatever lacks this mark can't be linked against and can't be cast to across library
/// borders.
#define QV_API __attribute__((visibility("default")))
