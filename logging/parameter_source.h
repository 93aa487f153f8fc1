#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <cstddef>
#include <string>

namespace NS_CORBA {

/// The parameters of one request, asked for one after the other, each once: printed or skipped. Both raise a
/// CORBA system exception when the ORB can't hand a value out or its bytes can't be read past:
/// CORBA::NO_IMPLEMENT for a type whose length isn't to be told from them, CORBA::IMP_LIMIT for one that is
/// too deep or too large, CORBA::MARSHAL for what isn't a value of its type. The source is of no more use
/// then.
class ParameterSource {
  public:
    virtual ~ParameterSource() = default;

    virtual std::size_t count() const = 0;                               ///< how many there are
    virtual CORBA::ParameterMode mode(std::size_t parameter) const = 0;  ///< of the parameter, from 0 on
    /// Appends the value's text, and sets `printedNul` when that holds a NUL; never clears it.
    /// @return 0, or non-zero when it can't be printed: `text` then ends with what could be
    virtual int Append(std::size_t parameter, std::string& text, bool& printedNul) = 0;
    /// Goes past the value without a text.
    virtual void Skip(std::size_t parameter) = 0;
};

}  // namespace NS_CORBA
