#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <cstddef>
#include <string>

namespace NS_CORBA {

/// The parameters of one request, asked for one after the other, each once: printed or skipped.
class ParameterSource {
  public:
    virtual ~ParameterSource() = default;

    virtual std::size_t count() const = 0;
    virtual CORBA::ParameterMode mode(std::size_t parameter) const = 0;
    /// Appends the value's text. @return 0, or non-zero when it can't be printed
    virtual int Append(std::size_t parameter, std::string& text, bool& printedNul) = 0;
    virtual void Skip(std::size_t parameter) = 0;
};

}  // namespace NS_CORBA
