#include "orb/value_access.h"

#include <tao/AnyTypeCode/Any_Impl.h>
#include <tao/AnyTypeCode/Any_Unknown_IDL_Type.h>
#include <tao/AnyTypeCode/TypeCode.h>
#include <tao/CDR.h>

namespace qv_orb {

namespace {

// The contents of a stream in one block, whose start is aligned for the largest basic type.
class OneBlock {
  public:
    explicit OneBlock(const TAO_OutputCDR& stream)
        : block_(stream.total_length() + ACE_CDR::MAX_ALIGNMENT) {
        ACE_CDR::mb_align(&block_);
        ACE_CDR::consolidate(&block_, stream.begin());
    }
    const char* data() const { return block_.rd_ptr(); }
    std::size_t size() const { return block_.length(); }

  private:
    ACE_Message_Block block_;
};

}  // namespace

struct ValueBytes::Copy {
    explicit Copy(const TAO_OutputCDR& stream) : block(stream) {}
    OneBlock block;
};

CORBA::TypeCode_ptr TypeOf(const CORBA::Any& any) {
    return any._tao_get_typecode();
}

std::string TypeCodeBytes(CORBA::TypeCode_ptr type) {
    TAO_OutputCDR stream;
    if (!(stream << type)) {
        throw CORBA::MARSHAL();
    }
    const OneBlock block(stream);
    return std::string(block.data(), block.size());
}

bool ExceptionsInAnysCarryId() {
    return true;
}

ValueBytes::ValueBytes(const CORBA::Any& any) {
    TAO::Any_Impl* const impl = any.impl();
    if (impl == nullptr) {
        return;
    }
    TAO_OutputCDR stream;
    if (!impl->marshal_value(stream)) {
        throw CORBA::MARSHAL();
    }
    m_copy = std::make_unique<Copy>(stream);
    m_data = m_copy->block.data();
    m_size = m_copy->block.size();
}

ValueBytes::~ValueBytes() = default;

}  // namespace qv_orb
