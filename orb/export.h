// Visibility of what the ORB seam offers to the other libraries.
#pragma once

/// Marks what libqv_orb offers; whatever lacks the mark can't be linked against.
#define QV_ORB_API __attribute__((visibility("default")))
