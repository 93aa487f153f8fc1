// Visibility of what the ORB seam offers to the other libraries.
#pragma once

#define QV_ORB_API __attribute__((visibility("default")))
