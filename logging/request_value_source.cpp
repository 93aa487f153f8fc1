#include "logging/request_value_source.h"

#include <algorithm>
#include <utility>

#include "logging/secret_parameters.h"
#include "logging/value_plan_cache.h"
#include "logging/value_printer.h"

namespace NS_CORBA {

RequestValueSource::RequestValueSource(qv_orb::RequestValues& values, Printer print,
                                       const std::vector<int>& secrets)
    : m_values(values),
      m_print(std::move(print)),
      m_secrets(secrets),
      m_printed(values.returned() ? PrintedParameters::Of(values) : nullptr),
      m_sent(m_printed ? qv_orb::CdrBytes() : values.sent()),
      m_givenBack(nullptr, 0),
      m_result(nullptr, 0) {
    if (!GivesBack()) {
        return;
    }
    m_givenBack = CdrReader(values.given_back());
    m_result = m_givenBack;
    if (HasResult()) {
        SkipIn(m_givenBack, values.result_type());
    }
}

bool RequestValueSource::HasResult() const {
    const CORBA::TCKind kind = m_values.result_type()->kind();
    return kind != CORBA::tk_void && kind != CORBA::tk_null;
}

bool RequestValueSource::GivesBack() const {
    if (!m_values.returned()) {
        return false;
    }
    bool any = HasResult();
    for (std::size_t i = 0; i < count() && !any; ++i) {
        any = mode(i) != CORBA::PARAM_IN;
    }
    return any;
}

void RequestValueSource::SkipIn(CdrReader& reader, CORBA::TypeCode_ptr type) {
    std::string nothing;
    ValuePrinter(nothing, [] { return true; }).Skip(*PlanOf(type), reader);
}

/// Where the value comes next that a record of this moment shows.
CdrReader& RequestValueSource::ReaderOf(std::size_t parameter) {
    if (mode(parameter) == CORBA::PARAM_IN || !m_values.returned()) {
        return m_sent;
    }
    if (mode(parameter) == CORBA::PARAM_INOUT && !m_printed) {
        SkipIn(m_sent, m_values.type(parameter));  // what it was
    }
    return m_givenBack;
}

void RequestValueSource::NotePieces(PrintedParameters& printed) {
    printed.pieces.resize(count());
    m_noted = &printed;
}

int RequestValueSource::Append(std::size_t parameter, std::string& text, bool& printedNul) {
    if (m_printed && mode(parameter) == CORBA::PARAM_IN) {
        const PrintedParameters::Piece& piece = m_printed->pieces[parameter];
        text.append(m_printed->text, piece.begin, piece.end - piece.begin);
        return 0;
    }
    const std::size_t begin = text.size();
    const int result = AppendValue(parameter, text, printedNul);
    if (m_noted) {
        m_noted->pieces[parameter] = {begin, text.size()};
    }
    return result;
}

int RequestValueSource::AppendValue(std::size_t parameter, std::string& text, bool& printedNul) {
    CdrReader& reader = ReaderOf(parameter);
    if (std::find(m_secrets.begin(), m_secrets.end(), static_cast<int>(parameter)) != m_secrets.end()) {
        SkipIn(reader, m_values.type(parameter));
        text += kSecretMask;
        return 0;
    }
    return m_print(m_values.type(parameter), reader, text, printedNul);
}

void RequestValueSource::Skip(std::size_t parameter) {
    const bool in = mode(parameter) == CORBA::PARAM_IN;
    if (in ? m_printed != nullptr : mode(parameter) == CORBA::PARAM_OUT && !m_values.returned()) {
        return;  // it stands elsewhere, or has no value yet
    }
    SkipIn(ReaderOf(parameter), m_values.type(parameter));
}

int RequestValueSource::AppendResult(std::string& text, bool& printedNul) {
    return m_print(m_values.result_type(), m_result, text, printedNul);
}

}  // namespace NS_CORBA
