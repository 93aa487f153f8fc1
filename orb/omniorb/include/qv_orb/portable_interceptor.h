// module PortableInterceptor (CORBA 3.0, chapter 21), the server side and what both sides share. Client
// request interceptors and IOR interceptors are not offered: registering one raises NO_IMPLEMENT.
#pragma once

#include "qv_orb/dynamic.h"
#include "qv_orb/orb_base.h"

#include <PortableInterceptorTypes.hh>

#include "qv_orb/interceptor.h"
#include "qv_orb/orb_initializer.h"
#include "qv_orb/request_info.h"
