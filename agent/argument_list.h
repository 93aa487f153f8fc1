#pragma once

namespace NS_CORBA {

/// Frees what ACE_OS::string_to_argv made, and clears the pointer. Null is let be.
void FreeArgumentList(char**& arguments);

}  // namespace NS_CORBA
