#pragma once

#include <cstdint>
#include <exception>
#include <sstream>

#include "platform/export.h"

namespace NS_CORBA {

/// An internal failure of the agent: a code, the place where it was raised, and a message.
///
/// The texts are streams, so that who raises composes them with `<<`. what() stays the standard library's.
/// Objects are not shared between threads.
class QV_API ProcessException : public std::exception {
  public:
    ProcessException();

    /// Copies what `other` has left to read of its four texts, and thereby reads them: a second copy of the
    /// same object has empty texts, while str() on the source still gives all of it. A stream of the copy
    /// that got nothing is in the fail state, and takes no further text before clear().
    ProcessException(ProcessException& other);

    ~ProcessException() override;

    std::uint32_t m_code = 0;      ///< result code; 0 when none was given
    std::int32_t m_line = 0;       ///< source line of the raise
    std::stringstream m_file;      ///< source file of the raise
    std::stringstream m_function;  ///< function of the raise
    std::stringstream m_detail;    ///< further text for who catches; never logged here
    std::stringstream m_message;   ///< what NbiException logs
};

/// Raised when a platform service is absent. Its m_code is kInterfaceNotExist.
class QV_API InterfaceNotExistException : public ProcessException {
  public:
    static constexpr std::uint32_t kInterfaceNotExist = 0x41180004;  ///< the result code

    InterfaceNotExistException() = default;
    /// As the base's copy: takes the texts of `other` with it.
    InterfaceNotExistException(InterfaceNotExistException& other) = default;
    ~InterfaceNotExistException() override;
};

/// Logs `e`: its message goes to the debug channel at level 1, with the place of the raise as the position.
/// Raises nothing of its own; an exception of the log passes to the caller.
QV_API void NbiException(ProcessException& e);

}  // namespace NS_CORBA
