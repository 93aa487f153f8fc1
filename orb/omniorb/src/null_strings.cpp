#include "null_strings.h"

#include <cstring>

#include "orb_internals.h"
#include "wide_strings.h"

namespace qv_orb {
namespace {

// A transmission code set that measures strings instead of converting them.
class MeasuringCodeSet final : public omni::omniCodeSet::TCS_C {
  public:
    MeasuringCodeSet()
        : TCS_C(omni::omniCodeSet::ID_8859_1, "measuring", omni::omniCodeSet::CS_Other, GIOP::Version{1, 2}) {
    }

    CORBA::Boolean fastMarshalString(cdrStream& stream, omni::omniCodeSet::NCS_C*, CORBA::ULong,
                                     CORBA::ULong length, const char* text) override {
        if (text == nullptr) {
            throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_YES);
        }
        const CORBA::ULong size = static_cast<CORBA::ULong>(length != 0 ? length : std::strlen(text)) + 1;
        size >>= stream;
        stream.put_octet_array(reinterpret_cast<const CORBA::Octet*>(text), static_cast<int>(size));
        return true;
    }
    CORBA::Boolean fastMarshalChar(cdrStream& stream, omni::omniCodeSet::NCS_C*, CORBA::Char c) override {
        stream.marshalOctet(static_cast<CORBA::Octet>(c));
        return true;
    }

    // The general conversions are never reached while the fast ones succeed; nothing is read from this
    // stream.
    void marshalChar(cdrStream&, omni::omniCodeSet::UniChar) override {}
    void marshalString(cdrStream&, CORBA::ULong, CORBA::ULong, const omni::omniCodeSet::UniChar*) override {}
    omni::omniCodeSet::UniChar unmarshalChar(cdrStream&) override { return 0; }
    CORBA::ULong unmarshalString(cdrStream&, CORBA::ULong, omni::omniCodeSet::UniChar*&) override {
        return 0;
    }
};

omni::omniCodeSet::TCS_C* measuring() {
    static MeasuringCodeSet set;
    return &set;
}

omni::omniCodeSet::TCS_W* WideCodeSetOf(cdrStream* reply) {
    return reply != nullptr ? reply->TCS_W() : WideCodeSet();
}

}  // namespace

void RefuseNullStrings(omniCallDescriptor& call, cdrStream* codesets) {
    cdrCountingStream stream(measuring(), WideCodeSetOf(codesets));
    call.marshalReturnedValues(stream);
    stream.clearValueTracker();
}

void RefuseNullStrings(const CORBA::UserException& exception, cdrStream* codesets) {
    cdrCountingStream stream(measuring(), WideCodeSetOf(codesets));
    exception._NP_marshal(stream);
    stream.clearValueTracker();
}

}  // namespace qv_orb
