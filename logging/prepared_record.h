#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <cstddef>
#include <memory>
#include <string>

#include "logging/log_records.h"

namespace qv_orb {
class RequestValues;
}

namespace NS_CORBA {

class CorbaLogMgr;
struct PrintedParameters;

/// The record of one request with its text made ahead, for who writes it while others wait: printing the
/// values takes longer than all the rest.
///
/// Nothing is made ahead while operations aren't logged, when the ORB offers the values as Anys only, and
/// when something can't be told or printed: the record is then made when it is written, and says what is
/// wrong. Holds masked texts only, and those no longer than it lives. Used by the thread of the request.
class PreparedRecord {
  public:
    /// Leaves no trace in any log. @param info outlives this object. @param operation its operation, or null
    PreparedRecord(PortableInterceptor::ServerRequestInfo* info, const char* operation) noexcept;
    PreparedRecord(const PreparedRecord&) = delete;
    PreparedRecord& operator=(const PreparedRecord&) = delete;

    /// Does what TaWriteOperLog does for the request (0). Once only.
    void Write();

  private:
    bool Prepare(CorbaLogMgr& manager, const char* operation);
    bool AppendValues(CorbaLogMgr& manager, qv_orb::RequestValues& values);

    PortableInterceptor::ServerRequestInfo* const m_info;
    bool m_whole = false;         ///< the text can be written as it stands
    bool m_knowsAddress = false;  ///< there is an address for the record that ends the request
    TALogRecord m_record;
    std::string m_text;
    std::size_t m_body = 0;  ///< where the body begins in m_text
    std::shared_ptr<PrintedParameters> m_printed;
};

}  // namespace NS_CORBA
