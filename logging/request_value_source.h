#pragma once

#include <functional>
#include <vector>

#include "logging/cdr_reader.h"
#include "logging/parameter_source.h"
#include "logging/printed_parameters.h"
#include "orb/request_values.h"

namespace NS_CORBA {

/// The parameters as the ORB marshals them all at once. Raises CORBA::NO_IMPLEMENT where one of them can't be
/// skipped.
class RequestValueSource final : public ParameterSource {
  public:
    /// Prints the next value of a reader, as CorbaLogMgr does it.
    using Printer = std::function<int(CORBA::TypeCode_ptr, CdrReader&, std::string&, bool& printedNul)>;

    /// @param values outlives this object
    /// @param secrets positions of the parameters whose texts are masked
    RequestValueSource(qv_orb::RequestValues& values, Printer print, const std::vector<int>& secrets);

    /// Notes in `printed` where the texts of the parameters begin and end. It outlives this object.
    void NotePieces(PrintedParameters& printed);

    std::size_t count() const override { return m_values.parameters(); }
    CORBA::ParameterMode mode(std::size_t parameter) const override { return m_values.mode(parameter); }
    int Append(std::size_t parameter, std::string& text, bool& printedNul) override;
    void Skip(std::size_t parameter) override;

    bool HasResult() const;
    /// Appends the text of the result, after the parameters. Only for an operation that has one.
    int AppendResult(std::string& text, bool& printedNul);

  private:
    int AppendValue(std::size_t parameter, std::string& text, bool& printedNul);
    bool GivesBack() const;
    CdrReader& ReaderOf(std::size_t parameter);
    void SkipIn(CdrReader& reader, CORBA::TypeCode_ptr type);

    qv_orb::RequestValues& m_values;
    const Printer m_print;
    const std::vector<int>& m_secrets;
    const PrintedParameters* const m_printed;  // by the request's record; null: by none
    PrintedParameters* m_noted = nullptr;
    CdrReader m_sent;
    CdrReader m_givenBack;
    CdrReader m_result;
};

}  // namespace NS_CORBA
