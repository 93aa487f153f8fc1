#pragma once

#include <map>
#include <string>

#include <tao/ORBInitializer_Registry.h>

#include "logging/log_records.h"
#include "logging/logmgr.h"
#include "tests/unit/logging/fake_operation.h"
#include "tests/unit/logging/orb_environment.h"

namespace qv_test {

/// The same request, from which only the Anys can be had.
class AnysOnly final : public FakeServerRequestInfo {
  public:
    explicit AnysOnly(PortableInterceptor::ServerRequestInfo* info) : m_info(info) {}

    char* operation() override { return m_info->operation(); }
    CORBA::ULong request_id() override { return m_info->request_id(); }
    Dynamic::ParameterList* arguments() override { return m_info->arguments(); }
    CORBA::Any* result() override { return m_info->result(); }
    PortableInterceptor::ReplyStatus reply_status() override { return m_info->reply_status(); }
    CORBA::StringSeq* adapter_name() override { return m_info->adapter_name(); }

  private:
    PortableInterceptor::ServerRequestInfo* const m_info;
};

struct Recorded {
    int result = 0;
    std::string text;
};

/// What both ways gave for the last call, by message type.
struct Comparison {
    std::map<int, Recorded> direct;
    std::map<int, Recorded> throughAnys;
};

inline Comparison& Last() {
    static Comparison last;
    return last;
}

inline Recorded Take(PortableInterceptor::ServerRequestInfo* info, unsigned char type) {
    NS_CORBA::TALogRecord record;
    Recorded recorded;
    recorded.result = NS_CORBA::CorbaLogMgr::Instance()->GetOperLogRecord(info, type, record);
    recorded.text = record.paramInfo;
    return recorded;
}

class Comparing : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    char* name() override { return CORBA::string_dup("comparing"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo_ptr info) override { Compare(info, 0); }
    void send_reply(PortableInterceptor::ServerRequestInfo_ptr info) override { Compare(info, 1); }
    void send_exception(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_other(PortableInterceptor::ServerRequestInfo_ptr) override {}

  private:
    static void Compare(PortableInterceptor::ServerRequestInfo_ptr info, unsigned char type) {
        AnysOnly anys(info);
        Last().direct[type] = Take(info, type);
        Last().throughAnys[type] = Take(&anys, type);
    }
};

class Initializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        PortableInterceptor::ServerRequestInterceptor_var interceptor = new Comparing;
        info->add_server_request_interceptor(interceptor);
    }
};

/// The ORB of the test program, whose requests are recorded in both ways. To be called ahead of TestOrb().
inline CORBA::ORB_ptr OrbWithInterceptor() {
    static CORBA::ORB_var orb = [] {
        PortableInterceptor::ORBInitializer_var initializer = new Initializer;
        PortableInterceptor::register_orb_initializer(initializer);
        return CORBA::ORB::_duplicate(TestOrb());
    }();
    return orb.in();
}
}  // namespace qv_test
