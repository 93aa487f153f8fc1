#pragma once

#include <ace/Thread_Mutex.h>
#include <tao/LocalObject.h>
#include <tao/ORBInitializer_Registry.h>
#include <tao/PI_Server/PI_Server.h>

#include <fstream>
#include <map>
#include <string>

#include "platform/export.h"

/// Installs the agent's request interceptor in the ORB that is initialised after its registration with
/// PortableInterceptor::register_orb_initializer.
class QV_API Server_ORBInitializer : public virtual PortableInterceptor::ORBInitializer,
                                     public virtual CORBA::LocalObject {
  public:
    /// Does nothing.
    void pre_init(PortableInterceptor::ORBInitInfo* info) override;

    /// Creates the interceptor and hands it to the ORB, which then holds the only reference.
    /// @throws CORBA::NO_MEMORY
    void post_init(PortableInterceptor::ORBInitInfo* info) override;

    /// The name that post_init gives the interceptor.
    void SetInterceptorName(const std::string& name);

  private:
    std::string m_interceptorName;
};

/// Stands between the ORB and every servant: refuses requests while no hooks are plugged in, brackets the
/// others with the two hooks, writes the operation log and counts the operations.
///
/// The ORB's threads enter all points at once. Only the statistics, with the request's log record, are
/// serialised.
class QV_API Server_Request_Interceptor : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    /// Loads the counts of earlier runs when the statistics are on. A file that can't be read is no failure.
    explicit Server_Request_Interceptor(const char* name);
    ~Server_Request_Interceptor() override;

    /// A copy of the name, which the caller frees with CORBA::string_free.
    char* name() override;
    /// Does nothing: what the interceptor holds ends with it.
    void destroy() override;

    /// The name that name() answers. Not to be set while the ORB runs.
    void SetInterceptorName(const std::string& name);
    std::string GetInterceptorName() const;  ///< as name(), as a copy of its own

    // The interception points of ServerRequestInterceptor (CORBA 3.0, chapter 21).

    /// Does nothing.
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo* info) override;

    /// Brings the request past the two hooks, with record and count between them.
    /// @throws CORBA::NO_PERMISSION while no hooks are plugged in, and whatever a hook raises
    void receive_request(PortableInterceptor::ServerRequestInfo* info) override;
    /// Ends the request's huge task, then writes the record of the reply. Raises what the platform's
    /// HugeTaskMgr and ThreadContextMgr raise, and then writes no record; a failure of the record raises
    /// nothing.
    void send_reply(PortableInterceptor::ServerRequestInfo* info) override;
    /// The same, with the record of the exception.
    void send_exception(PortableInterceptor::ServerRequestInfo* info) override;
    /// A request that was forwarded: ends its huge task, as send_reply does, and leaves no record.
    void send_other(PortableInterceptor::ServerRequestInfo* info) override;

    /// Writes the request's operation record and, with the statistics on, raises the operation's count and
    /// rewrites the statistics file. A failure of these raises nothing.
    void RecordOperCount(PortableInterceptor::ServerRequestInfo* info);

    /// Repository id of the target's most derived interface and name of the operation. Both are empty when
    /// `info` is null or the interface is not known. For the hooks of the agent bundle.
    void GetMgrAndIfName(std::string& mgrName, std::string& ifName,
                         PortableInterceptor::ServerRequestInfo* info);

  private:
    void LoadOperCounts();
    void ReadOperCounts();
    void WriteOperCounts();

    CORBA::String_var m_name;
    std::map<std::string, unsigned long> m_operCounts;
    std::string m_statisticsPath;     ///< empty while the statistics are off
    std::fstream m_statisticsStream;  ///< open only while the file is read or written
    /// Guards the three members above, and the request's log record.
    ACE_Thread_Mutex m_statisticsLock;
};
