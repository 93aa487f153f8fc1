// module PortableInterceptor, the server side.
#pragma once

#include "qv_orb/portable_interceptor.h"
