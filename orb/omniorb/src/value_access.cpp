#include "orb/value_access.h"

#include "orb_internals.h"

#include <omniORB4/anyStream.h>

namespace qv_orb {

struct ValueBytes::Copy {
    cdrMemoryStream stream;
};

CORBA::TypeCode_ptr TypeOf(const CORBA::Any& any) {
    return any.NP_type();
}

std::string TypeCodeBytes(CORBA::TypeCode_ptr type) {
    cdrMemoryStream stream(0, true);
    CORBA::TypeCode::marshalTypeCode(type, stream);
    return std::string(static_cast<const char*>(stream.bufPtr()), stream.bufSize());
}

bool ExceptionsInAnysCarryId() {
    return false;
}

ValueBytes::ValueBytes(const CORBA::Any& any) {
    cdrMemoryStream* stream = &any.PR_streamToRead();
    if (stream->readOnly()) {  // over memory of unknown size
        m_copy = std::make_unique<Copy>();
        any.NP_marshalDataOnly(m_copy->stream);
        stream = &m_copy->stream;
    }
    m_data = static_cast<const char*>(stream->bufPtr());
    m_size = stream->bufSize();
}

ValueBytes::~ValueBytes() = default;

}  // namespace qv_orb
