#pragma once

#include "plainS.h"

namespace qv_test {

/// A servant to refer to, bind and call.
class PlainServant : public virtual POA_QvAgentTest::Plain {
  public:
    char* Echo(const char* text) override { return CORBA::string_dup(text); }
};

}  // namespace qv_test
