// module PortableInterceptor, what servers and clients share.
#pragma once

#include "qv_orb/portable_interceptor.h"
