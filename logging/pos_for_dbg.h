#pragma once

#include <string>

namespace NS_CORBA {

/// The source position that the next log record of one thread carries.
///
/// Each thread owns one, made on its first access and destroyed when it ends; it is reached through GetTss().
/// Nothing clears it between two log calls, so whoever logs sets it first (TA_POS or SetPos).
struct PosForDbg {
    std::string file;      ///< base name of the source file, without directory and extension
    std::string function;  ///< the library itself always writes "unknown" here
    int line = 0;          ///< source line of the call site; without meaning until it is set
};

}  // namespace NS_CORBA
