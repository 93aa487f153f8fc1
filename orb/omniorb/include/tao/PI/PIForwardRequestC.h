// PortableInterceptor::ForwardRequest.
#pragma once

#include "qv_orb/portable_interceptor.h"
