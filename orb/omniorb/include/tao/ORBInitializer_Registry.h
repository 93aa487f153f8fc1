// PortableInterceptor::register_orb_initializer.
#pragma once

#include "qv_orb/portable_interceptor.h"
